#include "service/LiveProperty.h"

#include <strings.h>

#include <algorithm>
#include <cctype>

#include "service/HttpDate.h"
#include "service/XmlText.h"

namespace service {
namespace {

constexpr std::string_view ClassPrefix = "drovane.objects.";

bool AppendIfSet(const std::string& value, std::string& xml) {
    AppendEscaped(xml, value);
    return !value.empty();
}

bool AppendNumber(std::int64_t value, std::string& xml) {
    xml += std::to_string(value);
    return true;
}

bool Lacks(const Resource& /*resource*/, std::string& /*xml*/) {
    return false;
}

bool AppendSyncProperties(const Resource& resource, std::string& xml) {
    for (const LiveProperty& property : LiveProperties()) {
        if (property.isSynced) {
            AppendElement(property, resource, xml);
        }
    }
    return true;
}

bool AppendClassType(const Resource& r, std::string& xml) {
    const std::string byKind = std::string(ClassPrefix) + (r.isCollection ? "Folder" : "File");
    return AppendIfSet(r.classType.empty() ? byKind : r.classType, xml);
}

std::string SetClassType(Resource& resource, const std::string& value) {
    if (!value.empty()) {
        if (strncasecmp(value.c_str(), ClassPrefix.data(), ClassPrefix.size()) != 0) {
            return "A class type begins with '" + std::string(ClassPrefix) + "'";
        }
        const std::string name = value.substr(ClassPrefix.size());
        if (name.empty() || !std::all_of(name.begin(), name.end(), [](unsigned char c) { return isalnum(c) != 0; })) {
            return "A class type ends in a name of letters and digits";
        }
        const auto is = [&](const char* other) { return strcasecmp(name.c_str(), other) == 0; };
        const bool isContainer = is("Folder") || is("Project") || is("Form");
        if (resource.isCollection ? is("File") : isContainer) {
            return "A " + std::string(resource.isCollection ? "collection" : "file") + " cannot be a " + name;
        }
    }
    resource.classType = value;
    return {};
}

std::string SetVisibility(Resource& resource, const std::string& value) {
    if (value != "show" && value != "hide") {
        return "The visibility is 'show' or 'hide'";
    }
    resource.visibility = value;
    return {};
}

std::string SetLinksExtractedAt(Resource& resource, const std::string& value) {
    if (resource.isCollection) {
        return "Only files have links";
    }
    if (!value.empty() && !ParseHttpDate(value) && !ParseIsoDate(value)) {
        return "The value is no date such as 'Fri, 20 Nov 2026 10:15:30 GMT' or '2026-11-20T10:15:30Z'";
    }
    resource.linksExtractedAt = value;
    return {};
}

std::string SetAttribute(Resource& resource, const std::string& value) {
    if (value.size() > 1 || (value.size() == 1 && (value[0] < ' ' || value[0] > '~'))) {
        return "The attribute is one character from U+0020 to U+007E";
    }
    resource.attribute = value;
    return {};
}

template <std::string Resource::*Member>
bool AppendMember(const Resource& resource, std::string& xml) {
    return AppendIfSet(resource.*Member, xml);
}

template <std::string Resource::*Member>
std::string SetAny(Resource& resource, const std::string& value) {
    resource.*Member = value;
    return {};
}

template <std::string Resource::*Member>
std::string SetNotEmpty(Resource& resource, const std::string& value) {
    if (value.empty()) {
        return "The value cannot be empty";
    }
    return SetAny<Member>(resource, value);
}

}  // namespace

const std::vector<LiveProperty>& LiveProperties() {
    static const std::vector<LiveProperty> Properties{
        {"creationdate", 'D', false,
         [](const Resource& r, std::string& xml) { return AppendIfSet(FormatIsoDate(r.created / 1000), xml); },
         nullptr},
        {"displayname", 'D', false,
         [](const Resource& r, std::string& xml) {
             return AppendIfSet(r.displayName.empty() ? r.name : r.displayName, xml);
         },
         SetAny<&Resource::displayName>},
        {"getcontentlanguage", 'D', false, Lacks, nullptr},
        {"getcontentlength", 'D', false,
         [](const Resource& r, std::string& xml) { return !r.isCollection && AppendNumber(r.size, xml); }, nullptr},
        {"getcontenttype", 'D', false,
         [](const Resource& r, std::string& xml) { return !r.isCollection && AppendIfSet(r.ContentType(), xml); },
         nullptr},
        {"getetag", 'D', false, [](const Resource& r, std::string& xml) { return AppendIfSet(r.ETag(), xml); },
         nullptr},
        {"getlastmodified", 'D', false,
         [](const Resource& r, std::string& xml) { return AppendIfSet(FormatHttpDate(r.ModifiedSeconds()), xml); },
         nullptr},
        {"lockdiscovery", 'D', false, Lacks, nullptr},
        {"resourcetype", 'D', false,
         [](const Resource& r, std::string& xml) {
             xml += r.isCollection ? "<D:collection/>" : "";
             return true;
         },
         nullptr},
        {"supportedlock", 'D', false, Lacks, nullptr},
        {"resourceclasstype", 'P', false, AppendClassType, SetClassType},
        {"syncproperties", 'P', false, AppendSyncProperties, nullptr},
        {"resourceid", 'P', true, [](const Resource& r, std::string& xml) { return AppendNumber(r.id, xml); }, nullptr},
        {"parentid", 'P', true, [](const Resource& r, std::string& xml) { return AppendNumber(r.parent, xml); },
         nullptr},
        {"version", 'P', true, [](const Resource& r, std::string& xml) { return AppendNumber(r.version, xml); },
         nullptr},
        {"versionid", 'P', true, [](const Resource& r, std::string& xml) { return AppendIfSet(r.VersionId(), xml); },
         nullptr},
        {"itemid", 'P', true, AppendMember<&Resource::itemId>, nullptr},
        {"ownerid", 'P', true, AppendMember<&Resource::owner>, SetNotEmpty<&Resource::owner>},
        {"privileges", 'P', true, AppendMember<&Resource::privileges>, SetNotEmpty<&Resource::privileges>},
        {"visibility", 'P', true, AppendMember<&Resource::visibility>, SetVisibility},
        {"checksummd5", 'P', true, AppendMember<&Resource::md5>, nullptr},
        {"syncoption", 'P', true, AppendMember<&Resource::syncOption>, SetAny<&Resource::syncOption>},
        {"linksextractedat", 'P', true, AppendMember<&Resource::linksExtractedAt>, SetLinksExtractedAt},
        {"attribute", 'P', true, AppendMember<&Resource::attribute>, SetAttribute},
    };
    return Properties;
}

const LiveProperty* FindLiveProperty(std::string_view name) {
    const auto& all = LiveProperties();
    const auto found = std::find_if(all.begin(), all.end(), [&](const LiveProperty& p) { return p.name == name; });
    return found == all.end() ? nullptr : &*found;
}

bool AppendElement(const LiveProperty& property, const Resource& resource, std::string& xml) {
    const std::size_t before = xml.size();
    const auto appendName = [&] {
        xml += property.prefix;
        xml += ':';
        xml += property.name;
    };
    xml += '<';
    appendName();
    xml += '>';
    const std::size_t beforeValue = xml.size();
    if (!property.append(resource, xml)) {
        xml.resize(before);
        return false;
    }
    if (xml.size() == beforeValue) {
        xml.back() = '/';
        xml += '>';
        return true;
    }
    xml += "</";
    appendName();
    xml += '>';
    return true;
}

}  // namespace service
