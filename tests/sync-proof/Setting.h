#pragma once

#include <cstdlib>
#include <string>

namespace syncproof {

/// The number in the environment variable `name`, by which a test is made longer or repeated; `otherwise` without one.
inline int Setting(const char* name, int otherwise) {
    const char* const text = std::getenv(name);
    return text == nullptr ? otherwise : std::stoi(text);
}

/// A test that tries something at each step of a pass takes one of so many.
inline int StepStride() {
    return Setting("OVSYNC_PROOF_STRIDE", STEP_STRIDE);
}

/// A test that tries something at each request of a pass takes one of so many.
inline int RequestStride() {
    return Setting("OVSYNC_PROOF_STRIDE", REQUEST_STRIDE);
}

}  // namespace syncproof
