#include "service/store/Resource.h"

#include <strings.h>

#include <array>
#include <utility>

namespace service::store {

Resource Resource::New(const Resource& parent, const std::string& name, const std::string& owner, bool isCollection,
                       std::int64_t now) {
    Resource resource;
    resource.parent = parent.id;
    resource.name = name;
    resource.isCollection = isCollection;
    resource.owner = owner;
    resource.created = now;
    resource.changed = now;
    return resource;
}

std::string Resource::VersionId() const {
    return itemId + "-" + std::to_string(version);
}

std::string Resource::ETag() const {
    return isCollection ? std::string() : '"' + VersionId() + '"';
}

std::string Resource::ContentType() const {
    constexpr std::array<std::pair<const char*, const char*>, 12> types{{{".css", "text/css"},
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
        for (const auto& [extension, type] : types) {
            if (strcasecmp(name.c_str() + dot, extension) == 0) {
                return type;
            }
        }
    }
    return "application/octet-stream";
}

std::int64_t Resource::ModifiedSeconds() const {
    constexpr std::int64_t perSecond = 1000000000;
    return modified / perSecond - (modified % perSecond < 0 ? 1 : 0);
}

}  // namespace service::store
