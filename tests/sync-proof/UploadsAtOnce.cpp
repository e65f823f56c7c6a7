#include "tests/sync-proof/UploadsAtOnce.h"

#include <cctype>
#include <map>
#include <regex>
#include <sstream>
#include <utility>

namespace syncproof {

std::set<std::string> UploadsAtOnce(const std::string& log) {
    // "18:20:03.765 995 us: PUT /shared/a 201, ...": when it began, to the millisecond, and how long it took.
    static const std::regex upload(R"((\d\d):(\d\d):(\d\d)\.(\d\d\d) (\d+) us: PUT (.*) 20[14], If-Match .*)");
    std::set<std::string> paths;
    std::map<std::string, std::pair<double, double>> last;
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);) {
        std::smatch match;
        if (!std::regex_match(line, match, upload)) {
            continue;
        }
        const double begin =
            ((std::stod(match[1]) * 60 + std::stod(match[2])) * 60 + std::stod(match[3])) * 1000 + std::stod(match[4]);
        const double end = begin + 1 + std::stod(match[5]) / 1000;
        const auto before = last.find(match[6]);
        if (before != last.end() && begin <= before->second.second && before->second.first <= end) {
            paths.insert(match[6]);
        }
        last[match[6]] = {begin, end};
    }
    return paths;
}

std::string InLogOfApache(const std::string& path) {
    const char* const digits = "0123456789abcdef";
    std::string text;
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            text += {'\\', c};
        } else if (c == '\t' || c == '\n') {
            text += c == '\t' ? "\\t" : "\\n";
        } else if (std::isprint(byte) != 0) {
            text += c;
        } else {
            text += {'\\', 'x', digits[byte / 16], digits[byte % 16]};
        }
    }
    return text;
}

}  // namespace syncproof
