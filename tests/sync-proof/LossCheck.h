#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "tests/sync-proof/RandomChanges.h"
#include "tests/sync-proof/Tally.h"

namespace syncproof {

/// Looks whether everything is somewhere that writers have written.
class LossCheck {
public:
    explicit LossCheck(Tally& tally) : _tally(tally) {}

    /// The contents, one a line, that one of them wrote, none of them changed or deleted, and are neither in one of the
    /// `folders` nor in the trash of one. What is in a trash alone is counted, and what the server lost itself: that of
    /// which `isLostThere` says so of the path at which it was written.
    std::string Lost(
        const std::vector<const RandomChanges*>& writers, const std::vector<std::string>& folders,
        const std::function<bool(const std::string& path)>& isLostThere = [](const std::string&) { return false; });

private:
    Tally& _tally;
    std::set<std::string> _inTrash;
    std::set<std::string> _lostThere;
};

}  // namespace syncproof
