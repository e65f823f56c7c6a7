#pragma once

#include <cstdint>
#include <string>

#include "service/tree/ServiceTree.h"

namespace service::tree {

/// Files to try and to measure the service with.
struct Seeding {
    /// The folder in the root that has them.
    std::string folder;
    std::int64_t files = 0;
    /// The files are spread evenly over so many folders in two levels below `folder`; 0: they lie in it.
    std::int64_t folders = 0;
};

/// Makes those files, "file-000001.txt" and so on, that are missing in `directory`, which `tree` serves, and has the
/// tree know them and their checksums. Throws std::runtime_error when something else has the name of a folder, and
/// std::system_error when the disk fails.
void Seed(ServiceTree& tree, const std::string& directory, const Seeding& seeding);

}  // namespace service::tree
