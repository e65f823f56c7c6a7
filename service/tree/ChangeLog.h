#pragma once

#include <cstdint>
#include <deque>
#include <stdexcept>
#include <string>
#include <vector>

namespace service::tree {

/// A sync token is not one of this run of the service, or older than what it remembers.
class InvalidSyncToken : public std::runtime_error {
public:
    explicit InvalidSyncToken(const std::string& token)
        : std::runtime_error("The sync token '" + token + "' is not known any more") {}
};

/// What was removed when, and the tokens by which clients ask what has changed since. It is kept in memory alone: what
/// a token of an earlier run stands for may have been replaced by a backup since. Used by one thread at a time.
class ChangeLog {
public:
    struct Removal {
        /// The server path.
        std::string path;
        bool isCollection = false;
        /// By the service's clock, in milliseconds.
        std::int64_t time = 0;
    };

    ChangeLog();

    void AddRemoval(const Removal& removal);

    /// What was removed after `time`, each path once; the last removal comes first.
    std::vector<Removal> RemovalsSince(std::int64_t time) const;

    /// Of the last removal; 0 before the first.
    std::int64_t LastRemoval() const { return _removals.empty() ? 0 : _removals.back().time; }

    /// The token that stands for everything up to `time`.
    std::string TokenAt(std::int64_t time) const;

    /// The time that a token stands for. Throws InvalidSyncToken.
    std::int64_t TimeOf(const std::string& token) const;

private:
    std::string _prefix;
    std::deque<Removal> _removals;
    // Of the last removal that has been forgotten.
    std::int64_t _forgottenUpTo = 0;
};

}  // namespace service::tree
