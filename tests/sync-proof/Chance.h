#pragma once

#include <random>
#include <string>

#include "tests/sync-proof/Tally.h"

namespace syncproof {

/// What a random test draws, the same again for the same seed.
class Chance {
public:
    Chance(unsigned seed, Tally& tally) : _random(seed), _tally(tally) {}

    size_t Below(size_t limit) { return std::uniform_int_distribution<size_t>(0, limit - 1)(_random); }

    /// Whether the mishap happens, as one of so many times. Those that do are counted.
    bool Happens(const std::string& mishap, size_t oneOf) {
        const bool happens = Below(oneOf) == 0;
        _tally.mishaps[mishap] += happens ? 1 : 0;
        return happens;
    }

    /// Up to two days ahead or behind, in seconds.
    int ClockShift() {
        const int limit = 2 * 86400;
        return std::uniform_int_distribution<int>(-limit, limit)(_random);
    }

    /// For what draws numbers of its own, because it runs beside.
    unsigned Seed() { return static_cast<unsigned>(_random()); }

    std::mt19937& Source() { return _random; }

private:
    std::mt19937 _random;
    Tally& _tally;
};

}  // namespace syncproof
