#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "service/protocol/Property.h"

namespace service::protocol {

/// What a PROPPATCH wants changed.
struct PropertyUpdate {
    struct Instruction {
        /// Its `xml` is empty in a removal.
        DeadProperty property;
        bool isRemoval = false;
        /// The character data of the value.
        std::string text;
        /// Whether the value has elements in it.
        bool hasElements = false;
    };

    /// Reads the body of a request. Throws HttpError 400.
    static PropertyUpdate Parse(std::string_view body);

    /// In the order of the request.
    std::vector<Instruction> instructions;
};

}  // namespace service::protocol
