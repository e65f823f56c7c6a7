#pragma once

#include <cstddef>
#include <map>
#include <ostream>
#include <string>

namespace syncproof {

/// What happened in all, for people.
struct Tally {
    int rounds = 0;
    int settled = 0;
    std::map<std::string, int> mishaps;
    std::map<int, int> exits;
    size_t written = 0;
    size_t inTrash = 0;
};

inline std::ostream& operator<<(std::ostream& stream, const Tally& tally) {
    stream << tally.rounds << " rounds, " << tally.settled << " times settled, " << tally.written
           << " contents, of which " << tally.inTrash << " were found in the trash alone;";
    for (const auto& [mishap, times] : tally.mishaps) {
        stream << " " << mishap << " " << times << ",";
    }
    for (const auto& [exit, times] : tally.exits) {
        stream << " exit " << exit << ": " << times << ",";
    }
    return stream;
}

}  // namespace syncproof
