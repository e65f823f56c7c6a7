#pragma once

#include <algorithm>
#include <cstddef>
#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace syncproof {

/// What happened in all, for people.
struct Tally {
    int rounds = 0;
    int settled = 0;
    std::map<std::string, int> mishaps;
    std::map<int, int> exits;
    size_t written = 0;
    size_t inTrash = 0;
    /// How many seconds it took each time until all sides were equal.
    std::vector<double> settling;
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
    if (!tally.settling.empty()) {
        const auto inTime =
            std::count_if(tally.settling.begin(), tally.settling.end(), [](double seconds) { return seconds <= 10; });
        stream << " equal within ten seconds: " << inTime << " of " << tally.settling.size() << ", at the latest after "
               << *std::max_element(tally.settling.begin(), tally.settling.end()) << " s";
    }
    return stream;
}

}  // namespace syncproof
