#include "service/tree/ChangeLog.h"

#include <charconv>
#include <random>
#include <set>

namespace service::tree {

ChangeLog::ChangeLog() {
    std::random_device random;
    _prefix = "urn:ovsync:sync:" + std::to_string(random()) + "-" + std::to_string(random()) + ":";
}

void ChangeLog::AddRemoval(const Removal& removal) {
    constexpr std::size_t most = 100000;
    _removals.push_back(removal);
    if (_removals.size() > most) {
        _forgottenUpTo = _removals.front().time;
        _removals.pop_front();
    }
}

std::vector<ChangeLog::Removal> ChangeLog::RemovalsSince(std::int64_t time) const {
    std::vector<Removal> removals;
    std::set<std::string> seen;
    for (auto removal = _removals.rbegin(); removal != _removals.rend() && removal->time > time; ++removal) {
        if (seen.insert(removal->path).second) {
            removals.push_back(*removal);
        }
    }
    return removals;
}

std::string ChangeLog::TokenAt(std::int64_t time) const {
    return _prefix + std::to_string(time);
}

std::int64_t ChangeLog::TimeOf(const std::string& token) const {
    std::int64_t time = 0;
    if (token.compare(0, _prefix.size(), _prefix) != 0) {
        throw InvalidSyncToken(token);
    }
    const char* const tokenEnd = token.data() + token.size();
    const auto [end, error] = std::from_chars(token.data() + _prefix.size(), tokenEnd, time);
    if (error != std::errc() || end != tokenEnd || time < _forgottenUpTo) {
        throw InvalidSyncToken(token);
    }
    return time;
}

}  // namespace service::tree
