#pragma once

#include <cstdint>
#include <string>

namespace service::store {

/// One step of a change of the content: the file or folder at `source` gets the name `target`, which nothing else has.
/// Both are paths relative to the served folder.
struct Rename {
    std::string source;
    std::string target;
    /// Whether `source` should stay until a later step replaces it, so that its name never is without a file.
    bool keepSource = false;
    /// Of the file or folder; says after a crash whether the step was taken.
    std::uint64_t inode = 0;
};

}  // namespace service::store
