#pragma once

#include <set>
#include <string>

namespace syncproof {

/// The paths, as Apache writes them into `log`, to which it stored two uploads that ran at the same time. It looks at
/// the condition of an upload when that begins, so that it may have lost one of the two, whatever its client did.
std::set<std::string> UploadsAtOnce(const std::string& log);

/// As Apache writes it into its log.
std::string InLogOfApache(const std::string& path);

}  // namespace syncproof
