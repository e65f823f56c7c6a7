#include "client/user/Places.h"

#include <gtest/gtest.h>

#include "tests/fakes/CleanEnvironment.h"
#include "tests/fakes/Text.h"

namespace {

using tests::Text;

class PlacesTest : public testing::Test {
protected:
    PlacesTest() { Unset(); }
    ~PlacesTest() override { Unset(); }

    static void Unset() {
        for (const char* name : {"XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_RUNTIME_DIR"}) {
            qunsetenv(name);
        }
    }

    const tests::CleanEnvironment _environment;
};

TEST_F(PlacesTest, WithoutVariablesTheyAreAtHome) {
    EXPECT_EQ(ovsync::user::FoldersFilePath(), _environment.HomeFile(Text(".config/ovsync/folders.toml")));
    EXPECT_EQ(ovsync::user::StateFolder(), _environment.HomeFile(Text(".local/state/ovsync")));
    EXPECT_EQ(ovsync::user::RuntimeFolder(), _environment.HomeFile(Text(".local/state/ovsync")));
}

TEST_F(PlacesTest, VariablesNameThemUnlessTheyAreRelative) {
    qputenv("XDG_CONFIG_HOME", "/c/");
    qputenv("XDG_STATE_HOME", "/s");
    qputenv("XDG_RUNTIME_DIR", "/r");
    EXPECT_EQ(ovsync::user::FoldersFilePath(), Text("/c/ovsync/folders.toml"));
    EXPECT_EQ(ovsync::user::StateFolder(), Text("/s/ovsync"));
    EXPECT_EQ(ovsync::user::RuntimeFolder(), Text("/r/ovsync"));
    qputenv("XDG_RUNTIME_DIR", "r");
    EXPECT_EQ(ovsync::user::RuntimeFolder(), Text("/s/ovsync"));
}

}  // namespace
