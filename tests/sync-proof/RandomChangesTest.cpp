#include "tests/sync-proof/RandomChanges.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <random>
#include <thread>

#include "tests/sync-proof/DiskWriter.h"
#include "tests/sync-proof/Setting.h"
#include "tests/sync-proof/TwoSides.h"

namespace syncproof {
namespace {

using testing::AnyOf;

/// The contents in `before` that are in none of the others.
std::string Lost(const FolderImage& before, const FolderImage& here, const FolderImage& there,
                 const std::set<std::string>& mayGo) {
    std::set<std::string> left = ContentsOf(here);
    left.merge(ContentsOf(there));
    std::string lost;
    for (const auto& [path, content] : before) {
        if (!content.empty() && left.count(content) == 0 && mayGo.count(content) == 0) {
            lost += path + ": " + content.substr(0, 40) + "\n";
        }
    }
    return lost;
}

class RandomChangesTest : public testing::Test {
protected:
    RandomChangesTest() { sides.StartService(); }

    /// What nobody changed or deleted, and is nowhere.
    std::string LostInTheEnd(const RandomChanges& changes, const std::set<std::string>& retired) const {
        std::set<std::string> left = ContentsOf(sides.ImageHere());
        left.merge(ContentsOf(sides.ImageThere()));
        if (const std::string trash = sides.here / ".ovsync/trash"; std::filesystem::exists(trash)) {
            left.merge(ContentsOf(ReadFolder(trash)));
        }
        std::string lost;
        for (const auto& [content, path] : changes.Written()) {
            if (left.count(content) + retired.count(content) + changesThere.Retired().count(content) == 0) {
                lost += path + ": " + content.substr(0, 40) + "\n";
            }
        }
        return lost;
    }

    /// What a person changed or deleted. One content may lie at two paths, and each side have retired one of them.
    std::set<std::string> Retired() const {
        std::set<std::string> retired = changesHere.Retired();
        retired.insert(changesThere.Retired().begin(), changesThere.Retired().end());
        return retired;
    }

    /// Nothing moves on the service, nothing that only this side had goes, and what is not in step is told.
    void PullAndCheck(const TwoSides::Words& options) {
        const FolderImage hereBefore = sides.ImageHere();
        const FolderImage thereBefore = sides.ImageThere();
        const auto pass = sides.Pull(options);
        ASSERT_THAT(pass->ExitCode(), AnyOf(0, 1)) << pass->Text();
        const FolderImage here = sides.ImageHere();
        ASSERT_EQ(Differences(thereBefore, sides.ImageThere()), "") << "a pull changed the service\n" << pass->Text();
        ASSERT_EQ(Lost(hereBefore, here, thereBefore, Retired()), "") << pass->Text();
        for (const auto& [path, content] : here) {
            if (path.find(" (from the service, ") != std::string::npos && hereBefore.count(path) == 0) {
                copies[path] = content;
            }
        }
        for (const std::string& path : MissingFrom(here, thereBefore)) {
            const bool isLocalChange = hereBefore.count(path) != 0 && hereBefore.at(path) == FindIn(here, path);
            ASSERT_TRUE(pass->SpokeOf(path) || isLocalChange) << path << " is another here\n" << pass->Text();
            ASSERT_TRUE(here.count(path) != 0 || pass->ExitCode() == 1) << path << " did not come\n" << pass->Text();
        }
        ASSERT_EQ(sides.Leftovers(), "");
    }

    /// Nothing moves here, nothing goes from the service but what this side replaced, and what is not in step is told.
    void PushAndCheck() {
        const FolderImage hereBefore = sides.ImageHere();
        const FolderImage thereBefore = sides.ImageThere();
        const auto pass = sides.Push();
        ASSERT_THAT(pass->ExitCode(), AnyOf(0, 1)) << pass->Text();
        const FolderImage there = sides.ImageThere();
        ASSERT_EQ(Differences(hereBefore, sides.ImageHere()), "") << "a push changed this side\n" << pass->Text();
        ASSERT_EQ(Lost(thereBefore, hereBefore, there, Retired()), "") << pass->Text();
        for (const std::string& path : MissingFrom(there, hereBefore)) {
            ASSERT_TRUE(pass->SpokeOf(path) || IsCopy(path, hereBefore)) << path << " is another on the service\n"
                                                                         << pass->Text();
        }
        for (const std::string& path : MissingFrom(there, thereBefore)) {
            ASSERT_EQ(FindIn(there, path), FindIn(hereBefore, path)) << path << " was spoilt\n" << pass->Text();
        }
        ASSERT_EQ(sides.Leftovers(), "");
    }

    /// Whether it is what a pull put beside a file in conflict, and nobody has written it since.
    bool IsCopy(const std::string& path, const FolderImage& here) const {
        const auto copy = copies.find(path);
        return copy != copies.end() && copy->second == here.at(path);
    }

    static std::string FindIn(const FolderImage& image, const std::string& path) {
        const auto found = image.find(path);
        return found == image.end() ? "(nothing)" : found->second;
    }

    TwoSides sides;
    const unsigned seed =
        static_cast<unsigned>(Setting("OVSYNC_PROOF_SEED", static_cast<int>(std::random_device()() >> 1U)));
    RandomChanges::Random random{seed};
    FolderImage copies;
    RandomChanges changesHere{sides.here.Path(), "here", random, std::make_unique<DiskWriter>(sides.here.Path())};
    RandomChanges changesThere{sides.there.Path(), "there", random, std::make_unique<DiskWriter>(sides.there.Path())};
};

TEST_F(RandomChangesTest, NoContentThatOnlyOneSideHadIsEverLost) {
    SCOPED_TRACE("again with OVSYNC_PROOF_SEED=" + std::to_string(seed));
    const int rounds = Setting("OVSYNC_PROOF_ROUNDS", 15);
    const int changesOfEachSide = 70;
    for (int round = 1; round <= rounds; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        for (int i = 0; i < changesOfEachSide; ++i) {
            changesHere.Change();
            changesThere.Change();
        }
        ASSERT_NO_FATAL_FAILURE(PullAndCheck(random() % 2 == 0 ? TwoSides::Words{"--delete"} : TwoSides::Words{}));
        ASSERT_NO_FATAL_FAILURE(PushAndCheck());
    }
    ASSERT_EQ(LostInTheEnd(changesHere, changesHere.Retired()), "");
    ASSERT_EQ(LostInTheEnd(changesThere, changesHere.Retired()), "");
    // Without new changes both sides settle, and what still differs is a conflict that is told each time.
    for (int i = 0; i < 3; ++i) {
        ASSERT_NO_FATAL_FAILURE(PullAndCheck({"--delete"}));
        ASSERT_NO_FATAL_FAILURE(PushAndCheck());
    }
    const FolderImage here = sides.ImageHere();
    const FolderImage there = sides.ImageThere();
    const auto pull = sides.Pull({"--delete"});
    pull->ExitCode();
    const auto push = sides.Push();
    push->ExitCode();
    EXPECT_EQ(Differences(here, sides.ImageHere()), "") << pull->Text();
    EXPECT_EQ(Differences(there, sides.ImageThere()), "") << push->Text();
    for (const std::string& path : MissingFrom(here, there)) {
        EXPECT_TRUE(pull->SpokeOf(path) || push->SpokeOf(path)) << path << "\n" << pull->Text() << push->Text();
    }
    for (const std::string& path : MissingFrom(there, here)) {
        EXPECT_TRUE(pull->SpokeOf(path) || push->SpokeOf(path) || IsCopy(path, here)) << path << "\n"
                                                                                      << pull->Text() << push->Text();
    }
}

TEST_F(RandomChangesTest, WhatIsWrittenWhilePassesRunIsNotLost) {
    SCOPED_TRACE("again with OVSYNC_PROOF_SEED=" + std::to_string(seed));
    RandomChanges::Random randomOfWriter{seed + 1};
    RandomChanges writer(sides.here.Path(), "meanwhile", randomOfWriter,
                         std::make_unique<DiskWriter>(sides.here.Path(), DiskWriter::Writing::Aside));
    std::atomic<bool> isOver{false};
    std::thread writing([&] {
        while (!isOver) {
            try {
                writer.Change();
            } catch (const std::filesystem::filesystem_error&) {
                // A pass was quicker.
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    const int rounds = Setting("OVSYNC_PROOF_ROUNDS", 15);
    for (int round = 1; round <= rounds; ++round) {
        for (int i = 0; i < 30; ++i) {
            changesThere.Change();
        }
        const auto pull = sides.Pull({"--delete"});
        EXPECT_THAT(pull->ExitCode(), AnyOf(0, 1)) << pull->Text();
        const auto push = sides.Push();
        EXPECT_THAT(push->ExitCode(), AnyOf(0, 1)) << push->Text();
    }
    isOver = true;
    writing.join();
    EXPECT_EQ(LostInTheEnd(writer, writer.Retired()), "");
    EXPECT_EQ(LostInTheEnd(changesThere, writer.Retired()), "");
    EXPECT_GT(writer.Written().size(), 50U);
}

}  // namespace
}  // namespace syncproof
