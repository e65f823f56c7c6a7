#include "client/cli/input/ArgumentOrder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;

class ArgumentOrderTest : public testing::Test {
protected:
    ArgumentOrderTest() {
        CLI::App* const list = _app.add_subcommand("ls");
        list->add_option("-u,--user", _text);
        list->add_flag("-l,--long", _flag);
        CLI::App* const trash = _app.add_subcommand("trash");
        CLI::App* const restore = trash->add_subcommand("restore");
        restore->add_option("--from", _text);
        _app.add_flag("--version", _flag);
    }

    std::vector<std::string> Ordered(std::vector<const char*> arguments) {
        arguments.insert(arguments.begin(), "ovsync");
        return ovsync::input::CommandFirst(_app, static_cast<int>(arguments.size()), arguments.data());
    }

private:
    CLI::App _app;
    std::string _text;
    bool _flag = false;
};

TEST_F(ArgumentOrderTest, WhatFollowsTheCommandStaysAsItIs) {
    EXPECT_THAT(Ordered({"ls", "-l", "URL", "-u", "ann"}), ElementsAre("ls", "-l", "URL", "-u", "ann"));
    EXPECT_THAT(Ordered({"ls", "trash"}), ElementsAre("ls", "trash"));
}

TEST_F(ArgumentOrderTest, OptionsBeforeTheCommandComeBehindItWithTheirValues) {
    EXPECT_THAT(Ordered({"-l", "ls", "URL"}), ElementsAre("ls", "-l", "URL"));
    EXPECT_THAT(Ordered({"-u", "ls", "ls", "URL"}), ElementsAre("ls", "-u", "ls", "URL"));
    EXPECT_THAT(Ordered({"--user", "ann", "-l", "ls"}), ElementsAre("ls", "--user", "ann", "-l"));
    EXPECT_THAT(Ordered({"--user=ann", "ls"}), ElementsAre("ls", "--user=ann"));
    EXPECT_THAT(Ordered({"-uann", "ls"}), ElementsAre("ls", "-uann"));
    EXPECT_THAT(Ordered({"-lu", "ann", "ls"}), ElementsAre("ls", "-lu", "ann"));
}

TEST_F(ArgumentOrderTest, ACommandOfTwoWordsIsKeptTogether) {
    EXPECT_THAT(Ordered({"--from", "TIME", "trash", "restore", "DIR"}),
                ElementsAre("trash", "restore", "--from", "TIME", "DIR"));
    EXPECT_THAT(Ordered({"trash", "--from", "TIME", "restore", "DIR"}),
                ElementsAre("trash", "restore", "--from", "TIME", "DIR"));
}

TEST_F(ArgumentOrderTest, AnEmptyValueIsAWordOfItsOwn) {
    EXPECT_THAT(Ordered({"ls", "--user=", "URL"}), ElementsAre("ls", "--user", "", "URL"));
    EXPECT_THAT(Ordered({"--user=", "ls", "URL"}), ElementsAre("ls", "--user", "", "URL"));
    EXPECT_THAT(Ordered({"ls", "-u", "--user=", "URL"}), ElementsAre("ls", "-u", "--user=", "URL"));
    EXPECT_THAT(Ordered({"ls", "--", "--user="}), ElementsAre("ls", "--", "--user="));
    EXPECT_THAT(Ordered({"ls", "--user=a="}), ElementsAre("ls", "--user=a="));
}

TEST_F(ArgumentOrderTest, WhatIsNotACommandIsLeftToBeComplainedAbout) {
    EXPECT_THAT(Ordered({}), ElementsAre());
    EXPECT_THAT(Ordered({"--version"}), ElementsAre("--version"));
    EXPECT_THAT(Ordered({"-l", "frobnicate", "ls"}), ElementsAre("-l", "frobnicate", "ls"));
    EXPECT_THAT(Ordered({"--frobnicate", "ls"}), ElementsAre("ls", "--frobnicate"));
    EXPECT_THAT(Ordered({"-u"}), ElementsAre("-u"));
    EXPECT_THAT(Ordered({"-", "ls"}), ElementsAre("-", "ls"));
}

}  // namespace
