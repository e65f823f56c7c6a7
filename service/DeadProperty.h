#pragma once

#include <string>

#include "service/PropertyName.h"

namespace service {

/// A property that means nothing to the service and is kept as a client set it.
struct DeadProperty {
    PropertyName name;
    /// The whole element, with every namespace declaration it needs.
    std::string xml;
};

}  // namespace service
