#pragma once

#include <gtest/gtest.h>

#include <iostream>
#include <memory>
#include <random>
#include <string>

#include "tests/sync-proof/Setting.h"
#include "tests/sync-proof/Tally.h"

namespace syncproof {

/// How long a random test goes on.
struct Rounds {
    /// Unless OVSYNC_PROOF_ROUNDS says another number.
    int count = 5;
    /// So many are made in the same folders.
    int ofALife = 40;
    /// So often all conflicts are ended, and all sides have to become equal.
    int untilSettled = 5;
};

/// Makes the rounds of a random test, each of which has to say nothing, and prints what happened so far after each
/// life. A Life is made of a seed and a Tally, has a Round and a Settle, which return what is not as it has to be, and
/// counts at its end what was written.
template <typename Life, typename Make>
void MakeRounds(const Rounds& rounds, const std::string& name, Make make) {
    const int count = Setting("OVSYNC_PROOF_ROUNDS", rounds.count);
    auto seed = static_cast<unsigned>(Setting("OVSYNC_PROOF_SEED", static_cast<int>(std::random_device()() >> 1U)));
    Tally tally;
    std::unique_ptr<Life> life;
    // Who makes a thousand rounds wants to see how far they are.
    const auto tell = [&] {
        if (life) {
            life.reset();
            std::cout << name << ": " << tally << std::endl;
        }
    };
    for (int round = 0; round < count; ++round) {
        if (round % rounds.ofALife == 0) {
            tell();
            life = make(seed++, tally);
        }
        SCOPED_TRACE("OVSYNC_PROOF_SEED=" + std::to_string(seed - 1) + ", round " +
                     std::to_string(round % rounds.ofALife));
        ++tally.rounds;
        ASSERT_EQ(life->Round(), "");
        if (round % rounds.untilSettled == rounds.untilSettled - 1) {
            ++tally.settled;
            ASSERT_EQ(life->Settle(), "");
        }
    }
    tell();
}

}  // namespace syncproof
