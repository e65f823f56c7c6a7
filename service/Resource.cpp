#include "service/Resource.h"

#include <strings.h>

#include <array>
#include <utility>

namespace service {

std::string Resource::VersionId() const {
    return itemId + "-" + std::to_string(version);
}

std::string Resource::ETag() const {
    return isCollection ? std::string() : '"' + VersionId() + '"';
}

std::string Resource::ContentType() const {
    constexpr std::array<std::pair<const char*, const char*>, 12> Types{{{".css", "text/css"},
                                                                         {".csv", "text/csv"},
                                                                         {".gif", "image/gif"},
                                                                         {".htm", "text/html"},
                                                                         {".html", "text/html"},
                                                                         {".jpg", "image/jpeg"},
                                                                         {".json", "application/json"},
                                                                         {".pdf", "application/pdf"},
                                                                         {".png", "image/png"},
                                                                         {".txt", "text/plain"},
                                                                         {".xml", "application/xml"},
                                                                         {".zip", "application/zip"}}};
    const std::size_t dot = name.rfind('.');
    if (dot != std::string::npos) {
        for (const auto& [extension, type] : Types) {
            if (strcasecmp(name.c_str() + dot, extension) == 0) {
                return type;
            }
        }
    }
    return "application/octet-stream";
}

std::int64_t Resource::ModifiedSeconds() const {
    constexpr std::int64_t PerSecond = 1000000000;
    return modified / PerSecond - (modified % PerSecond < 0 ? 1 : 0);
}

}  // namespace service
