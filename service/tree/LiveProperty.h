#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "service/protocol/Property.h"
#include "service/store/Resource.h"

namespace service::tree {

/// A property that the service knows itself.
struct LiveProperty {
    std::string_view name;
    /// The prefix in answers: 'D' for those of RFC 4918, which "allprop" asks for, 'P' for the service's own, 'O' and
    /// 'A' for those in other namespaces.
    char prefix;
    /// Whether it is one of the children of `syncproperties`.
    bool isSynced;
    /// Appends the value as XML; returns false, without having appended anything, when the resource lacks the property.
    bool (*append)(const store::Resource& resource, std::string& xml);
    /// Sets the value; an empty one removes it. Returns why that cannot be, or an empty text. Null: cannot be set.
    std::string (*set)(store::Resource& resource, const std::string& value);
};

/// All of them.
const std::vector<LiveProperty>& LiveProperties();

/// The one with this name, or null.
const LiveProperty* FindLiveProperty(const protocol::PropertyName& name);

/// The namespace that `property` is in.
std::string_view NamespaceOf(const LiveProperty& property);

/// The declarations of all prefixes, as an element has them.
inline constexpr std::string_view PrefixDeclarations =
    " xmlns:D=\"DAV:\" xmlns:P=\"DAV:\" xmlns:O=\"urn:ovsync\" xmlns:A=\"http://apache.org/dav/props/\"";

/// Appends the whole element, or nothing when the resource lacks the property. Returns whether it has it.
bool AppendElement(const LiveProperty& property, const store::Resource& resource, std::string& xml);

}  // namespace service::tree
