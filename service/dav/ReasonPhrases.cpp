#include "service/dav/ReasonPhrases.h"

#include <array>
#include <string_view>

#include "service/protocol/ServerPath.h"

namespace service::dav {
namespace {

// What a phrase has in place of the name of what it is about.
constexpr char NameMark = '*';
constexpr std::size_t LongestName = 255;

using Phrases = std::array<std::string_view, 4>;

constexpr Phrases Occupied{"Existing file: already exists.", "The file already exists. Existing: *",
                           "ALREADY.EXISTS: *: existing.file", "exists already:  this is an Existing File"};
constexpr Phrases Absent{"Folder * does not exist.", "not found: the folder does.not exist", "Does Exist: NOT. *",
                         "It does exist  not"};
constexpr Phrases NoParent{"The parent is missing.", "Missing: parent of *", "No parent.", "* has no parent: missing"};

const Phrases* PhrasesFor(int status, const std::string& method) {
    // RFC 4918 has nothing to say about these two, and their 404 says that there is no such file.
    if (method == "GET" || method == "HEAD") {
        return nullptr;
    }
    switch (status) {
        case 404:
            return &Absent;
        case 405:
            return method == "MKCOL" ? &Occupied : nullptr;
        case 409:
            return &NoParent;
        default:
            return nullptr;
    }
}

}  // namespace

std::optional<std::string> ReasonPhrases::Next(int status, const std::string& method, const std::string& target) {
    const Phrases* phrases = PhrasesFor(status, method);
    if (phrases == nullptr) {
        return std::nullopt;
    }
    std::string phrase((*phrases)[_given++ % phrases->size()]);
    if (const std::size_t mark = phrase.find(NameMark); mark != std::string::npos) {
        const auto segments = protocol::SplitUrlPath(target);
        const std::string_view name = segments.empty() ? "/" : segments.back();
        phrase.replace(mark, 1, name.substr(0, LongestName));
    }
    return phrase;
}

}  // namespace service::dav
