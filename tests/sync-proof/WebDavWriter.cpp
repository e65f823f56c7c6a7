#include "tests/sync-proof/WebDavWriter.h"

#include <cctype>
#include <filesystem>

#include "tests/service/TemporaryFolder.h"
#include "tests/sync-proof/FolderImage.h"

namespace syncproof {
namespace {

std::string Escaped(const std::string& path) {
    const char* const digits = "0123456789ABCDEF";
    std::string escaped;
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (std::isalnum(byte) != 0 || c == '/' || c == '-' || c == '_') {
            escaped += c;
        } else {
            escaped += {'%', digits[byte / 16], digits[byte % 16]};
        }
    }
    return escaped;
}

}  // namespace

WebDavWriter::WebDavWriter(const std::string& name, const std::string& folder) : _name(name), _folder(folder) {}

void WebDavWriter::Connect(int port) {
    _client = std::make_unique<service::test::HttpClient>(port);
}

std::string WebDavWriter::_Target(const std::string& path) const {
    return "/" + _name + "/" + Escaped(path) + (std::filesystem::is_directory(_At(path)) ? "/" : "");
}

bool WebDavWriter::_Send(const std::string& method, const std::string& path, const std::vector<std::string>& headers,
                         const std::string& body) {
    return _client->Send(method, _Target(path), headers, body).status / 100 == 2;
}

bool WebDavWriter::Write(const std::string& path, const std::string& content, Contents& retired) {
    // A server that refuses may have begun.
    retired.insert(service::test::ReadFile(_At(path)).value_or(""));
    return _Send("PUT", path, {}, content);
}

void WebDavWriter::MakeFolder(const std::string& path) {
    _Send("MKCOL", path);
}

void WebDavWriter::Remove(const std::string& path, Contents& retired) {
    namespace fs = std::filesystem;
    const std::string elsewhere = _folder + "-removed";
    const std::string target = "/" + Escaped(fs::path(elsewhere).filename());
    const std::string slash = fs::is_directory(_At(path)) ? "/" : "";
    // What somebody puts there in this moment is not for this one to delete.
    _Send("MOVE", path, {"Overwrite: F", "Destination: " + _client->Url(target + slash)});
    if (fs::is_directory(elsewhere)) {
        for (const auto& [name, content] : ReadFolder(elsewhere)) {
            retired.insert(content);
        }
        _client->Send("DELETE", target + "/");
    } else if (const auto content = service::test::ReadFile(elsewhere)) {
        retired.insert(*content);
        _client->Send("DELETE", target);
    }
}

void WebDavWriter::Rename(const std::string& from, const std::string& to) {
    const std::string slash = std::filesystem::is_directory(_At(from)) ? "/" : "";
    _Send("MOVE", from, {"Overwrite: F", "Destination: " + _client->Url(_Target(to) + slash)});
}

void WebDavWriter::Touch(const std::string& path, std::chrono::seconds) {
    if (const auto content = service::test::ReadFile(_At(path))) {
        _Send("PUT", path, {}, *content);
    }
}

}  // namespace syncproof
