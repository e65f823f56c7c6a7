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
    /// By a server that stored two uploads at the same time.
    size_t lostThere = 0;
    /// How many seconds it took each time until all sides were equal, by how that came about.
    std::map<std::string, std::vector<double>> settling;
};

inline std::ostream& operator<<(std::ostream& stream, const Tally& tally) {
    stream << tally.rounds << " rounds, " << tally.settled << " times settled, " << tally.written
           << " contents, of which " << tally.inTrash << " were found in the trash alone, and " << tally.lostThere
           << " lost by the server;";
    for (const auto& [mishap, times] : tally.mishaps) {
        stream << " " << mishap << " " << times << ",";
    }
    for (const auto& [exit, times] : tally.exits) {
        stream << " exit " << exit << ": " << times << ",";
    }
    for (const auto& [how, seconds] : tally.settling) {
        const auto inTime = std::count_if(seconds.begin(), seconds.end(), [](double time) { return time <= 10; });
        stream << " " << how << " equal within ten seconds " << inTime << " of " << seconds.size()
               << " times, at the latest after " << *std::max_element(seconds.begin(), seconds.end()) << " s,";
    }
    return stream;
}

}  // namespace syncproof
