#include "service/tree/LiveProperty.h"

#include <strings.h>

#include <algorithm>
#include <cctype>

#include "service/protocol/HttpDate.h"
#include "service/protocol/UnixTime.h"
#include "service/protocol/XmlText.h"

namespace service::tree {
namespace {

constexpr std::string_view ClassPrefix = "drovane.objects.";

bool AppendIfSet(const std::string& value, std::string& xml) {
    protocol::AppendEscaped(xml, value);
    return !value.empty();
}

bool AppendNumber(std::int64_t value, std::string& xml) {
    xml += std::to_string(value);
    return true;
}

bool Lacks(const store::Resource& /*resource*/, std::string& /*xml*/) {
    return false;
}

bool AppendSyncProperties(const store::Resource& resource, std::string& xml) {
    for (const LiveProperty& property : LiveProperties()) {
        if (property.isSynced) {
            AppendElement(property, resource, xml);
        }
    }
    return true;
}

bool AppendClassType(const store::Resource& r, std::string& xml) {
    const std::string byKind = std::string(ClassPrefix) + (r.isCollection ? "Folder" : "File");
    return AppendIfSet(r.classType.empty() ? byKind : r.classType, xml);
}

std::string SetClassType(store::Resource& resource, const std::string& value) {
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

std::string SetVisibility(store::Resource& resource, const std::string& value) {
    if (value != "show" && value != "hide") {
        return "The visibility is 'show' or 'hide'";
    }
    resource.visibility = value;
    return {};
}

std::string SetLinksExtractedAt(store::Resource& resource, const std::string& value) {
    if (resource.isCollection) {
        return "Only files have links";
    }
    if (!value.empty() && !protocol::ParseHttpDate(value) && !protocol::ParseIsoDate(value)) {
        return "The value is no date such as 'Fri, 20 Nov 2026 10:15:30 GMT' or '2026-11-20T10:15:30Z'";
    }
    resource.linksExtractedAt = value;
    return {};
}

std::string SetAttribute(store::Resource& resource, const std::string& value) {
    if (value.size() > 1 || (value.size() == 1 && (value[0] < ' ' || value[0] > '~'))) {
        return "The attribute is one character from U+0020 to U+007E";
    }
    resource.attribute = value;
    return {};
}

std::string SetModificationTime(store::Resource& resource, const std::string& value) {
    const auto time = protocol::ParseUnixTime(value);
    if (resource.isCollection || !time) {
        return "Only files have this time, and theirs is seconds since 1970 such as '1795169730.5'";
    }
    resource.modified = *time;
    return {};
}

std::string SetExecutableBit(store::Resource& resource, const std::string& value) {
    if (resource.isCollection || (!value.empty() && value != "T" && value != "F")) {
        return "Only files are executable, by 'T' or 'F'";
    }
    resource.isExecutable = value == "T";
    return {};
}

template <std::string store::Resource::*Member>
bool AppendMember(const store::Resource& resource, std::string& xml) {
    return AppendIfSet(resource.*Member, xml);
}

template <std::string store::Resource::*Member>
std::string SetAny(store::Resource& resource, const std::string& value) {
    resource.*Member = value;
    return {};
}

template <std::string store::Resource::*Member>
std::string SetNotEmpty(store::Resource& resource, const std::string& value) {
    if (value.empty()) {
        return "The value cannot be empty";
    }
    return SetAny<Member>(resource, value);
}

}  // namespace

const std::vector<LiveProperty>& LiveProperties() {
    static const std::vector<LiveProperty> properties{
        {"creationdate", 'D', false,
         [](const store::Resource& r, std::string& xml) {
             return AppendIfSet(protocol::FormatIsoDate(r.created / 1000), xml);
         },
         nullptr},
        {"displayname", 'D', false,
         [](const store::Resource& r, std::string& xml) {
             return AppendIfSet(r.displayName.empty() ? r.name : r.displayName, xml);
         },
         SetAny<&store::Resource::displayName>},
        {"getcontentlanguage", 'D', false, Lacks, nullptr},
        {"getcontentlength", 'D', false,
         [](const store::Resource& r, std::string& xml) { return !r.isCollection && AppendNumber(r.size, xml); },
         nullptr},
        {"getcontenttype", 'D', false,
         [](const store::Resource& r, std::string& xml) {
             return !r.isCollection && AppendIfSet(r.ContentType(), xml);
         },
         nullptr},
        {"getetag", 'D', false, [](const store::Resource& r, std::string& xml) { return AppendIfSet(r.ETag(), xml); },
         nullptr},
        {"getlastmodified", 'D', false,
         [](const store::Resource& r, std::string& xml) {
             return AppendIfSet(protocol::FormatHttpDate(r.ModifiedSeconds()), xml);
         },
         nullptr},
        {"lockdiscovery", 'D', false, Lacks, nullptr},
        {"resourcetype", 'D', false,
         [](const store::Resource& r, std::string& xml) {
             xml += r.isCollection ? "<D:collection/>" : "";
             return true;
         },
         nullptr},
        {"supportedlock", 'D', false, Lacks, nullptr},
        {"resourceclasstype", 'P', false, AppendClassType, SetClassType},
        {"syncproperties", 'P', false, AppendSyncProperties, nullptr},
        {"sync-token", 'P', false, AppendMember<&store::Resource::syncToken>, nullptr},
        {"supported-report-set", 'P', false,
         [](const store::Resource& r, std::string& xml) {
             constexpr const char* reports =
                 "<D:supported-report><D:report><D:sync-collection/></D:report></D:supported-report>";
             xml += r.isCollection ? reports : "";
             return r.isCollection;
         },
         nullptr},
        {"resourceid", 'P', true, [](const store::Resource& r, std::string& xml) { return AppendNumber(r.id, xml); },
         nullptr},
        {"parentid", 'P', true, [](const store::Resource& r, std::string& xml) { return AppendNumber(r.parent, xml); },
         nullptr},
        {"version", 'P', true, [](const store::Resource& r, std::string& xml) { return AppendNumber(r.version, xml); },
         nullptr},
        {"versionid", 'P', true,
         [](const store::Resource& r, std::string& xml) { return AppendIfSet(r.VersionId(), xml); }, nullptr},
        {"itemid", 'P', true, AppendMember<&store::Resource::itemId>, nullptr},
        {"ownerid", 'P', true, AppendMember<&store::Resource::owner>, SetNotEmpty<&store::Resource::owner>},
        {"privileges", 'P', true, AppendMember<&store::Resource::privileges>,
         SetNotEmpty<&store::Resource::privileges>},
        {"visibility", 'P', true, AppendMember<&store::Resource::visibility>, SetVisibility},
        {"checksummd5", 'P', true, AppendMember<&store::Resource::md5>, nullptr},
        {"syncoption", 'P', true, AppendMember<&store::Resource::syncOption>, SetAny<&store::Resource::syncOption>},
        {"linksextractedat", 'P', true, AppendMember<&store::Resource::linksExtractedAt>, SetLinksExtractedAt},
        {"attribute", 'P', true, AppendMember<&store::Resource::attribute>, SetAttribute},
        {"mtime", 'O', true,
         [](const store::Resource& r, std::string& xml) {
             return !r.isCollection && AppendIfSet(protocol::FormatUnixTime(r.modified), xml);
         },
         SetModificationTime},
        {"executable", 'A', true,
         [](const store::Resource& r, std::string& xml) { return AppendIfSet(r.isExecutable ? "T" : "", xml); },
         SetExecutableBit},
    };
    return properties;
}

std::string_view NamespaceOf(const LiveProperty& property) {
    switch (property.prefix) {
        case 'O':
            return "urn:ovsync";
        case 'A':
            return "http://apache.org/dav/props/";
        default:
            return protocol::DavNamespace;
    }
}

const LiveProperty* FindLiveProperty(const protocol::PropertyName& name) {
    const auto& all = LiveProperties();
    const auto found = std::find_if(all.begin(), all.end(), [&](const LiveProperty& p) {
        return p.name == name.name && NamespaceOf(p) == name.nameSpace;
    });
    return found == all.end() ? nullptr : &*found;
}

bool AppendElement(const LiveProperty& property, const store::Resource& resource, std::string& xml) {
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

}  // namespace service::tree
