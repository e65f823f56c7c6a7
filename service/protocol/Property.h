#pragma once

#include <string>

namespace service::protocol {

/// The name of any WebDAV property.
struct PropertyName {
    /// Empty for names in no namespace.
    std::string nameSpace;
    std::string name;
};

/// A property that means nothing to the service and is kept as a client set it.
struct DeadProperty {
    PropertyName name;
    /// The whole element, with every namespace declaration it needs.
    std::string xml;
};

}  // namespace service::protocol
