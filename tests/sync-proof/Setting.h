#pragma once

#include <cstdlib>
#include <string>

namespace syncproof {

/// The number in the environment variable `name`, by which a test is made longer or repeated; `otherwise` without one.
inline int Setting(const char* name, int otherwise) {
    const char* const text = std::getenv(name);
    return text == nullptr ? otherwise : std::stoi(text);
}

}  // namespace syncproof
