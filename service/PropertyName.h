#pragma once

#include <string>

namespace service {

/// The name of any WebDAV property.
struct PropertyName {
    /// Empty for names in no namespace.
    std::string nameSpace;
    std::string name;
};

}  // namespace service
