#include <gmock/gmock.h>

#include <algorithm>

#include "tests/sync-proof/TwoSides.h"

namespace syncproof {
namespace {

class ConflictTest : public testing::Test {
protected:
    ConflictTest() {
        sides.StartService();
        sides.there.Write("f.txt", "both know");
        EXPECT_EQ(sides.Pull()->ExitCode(), 0);
        sides.there.Write("f.txt", "of the service");
        sides.here.Write("f.txt", "of this side");
        EXPECT_EQ(sides.Pull()->ExitCode(), 1);
        const FolderImage here = sides.ImageHere();
        const auto found = std::find_if(here.begin(), here.end(), [](const auto& file) {
            return file.first.find("f (from the service, ") == 0 && file.second == "of the service";
        });
        EXPECT_NE(found, here.end());
        copy = found == here.end() ? "missing" : found->first;
    }

    TwoSides sides;
    /// Where the service's version is.
    std::string copy;
};

TEST_F(ConflictTest, NobodyOverwritesTheOtherVersion) {
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(sides.Push()->ExitCode(), 1);
        EXPECT_EQ(sides.Pull({"--delete"})->ExitCode(), 1);
    }
    EXPECT_EQ(sides.ImageThere(), (FolderImage{{"f.txt", "of the service"}}));
    EXPECT_EQ(sides.ImageHere(), (FolderImage{{"f.txt", "of this side"}, {copy, "of the service"}}));
}

TEST_F(ConflictTest, ACopyThatSomebodyWroteIntoIsSentLikeAnyFile) {
    sides.here.Write(copy, "of the service, and more");
    EXPECT_EQ(sides.Push()->ExitCode(), 1);
    EXPECT_EQ(sides.ImageThere(), (FolderImage{{"f.txt", "of the service"}, {copy, "of the service, and more"}}));
}

}  // namespace
}  // namespace syncproof
