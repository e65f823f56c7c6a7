#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "service/store/Resource.h"

namespace service::tree {

/// A property of the namespace DAV: that the service knows itself.
struct LiveProperty {
    std::string_view name;
    /// The prefix in answers: 'D' for those of RFC 4918, which "allprop" asks for, 'P' for the service's own.
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
const LiveProperty* FindLiveProperty(std::string_view name);

/// Appends the whole element, or nothing when the resource lacks the property. Returns whether it has it.
bool AppendElement(const LiveProperty& property, const store::Resource& resource, std::string& xml);

}  // namespace service::tree
