#include "client/cli/input/GlobFilter.h"

#include <gtest/gtest.h>

#include "client/cli/input/UsageError.h"
#include "tests/fakes/Printers.h"
#include "tests/fakes/Text.h"

namespace {

using ovsync::input::GlobFilter;
using ovsync::input::UsageError;
using tests::Text;

bool Excludes(const char* glob, const char* name) {
    GlobFilter filter({Text(glob)});
    const bool asFile = filter.IsFileExcluded(Text(name), 1, 2);
    EXPECT_EQ(filter.IsFolderExcluded(Text(name), 2), asFile) << glob << ' ' << name;
    return asFile;
}

TEST(GlobFilterTest, AGlobMatchesTheWholeName) {
    EXPECT_TRUE(Excludes("a.txt", "a.txt"));
    EXPECT_FALSE(Excludes("a.txt", "a.txt~"));
    EXPECT_FALSE(Excludes("a.txt", "ba.txt"));
    EXPECT_FALSE(Excludes("a.txt", "aXtxt"));
    EXPECT_FALSE(Excludes("a.txt", "A.TXT"));
}

TEST(GlobFilterTest, AStarStandsForAnyCharacters) {
    EXPECT_TRUE(Excludes("*.tmp", "x.tmp"));
    EXPECT_TRUE(Excludes("*.tmp", ".tmp"));
    EXPECT_TRUE(Excludes("~$*", "~$doc"));
    EXPECT_TRUE(Excludes("*", "\xC3\xA9"));
    EXPECT_FALSE(Excludes("*.tmp", "x.tmpl"));
}

TEST(GlobFilterTest, AQuestionMarkStandsForOneCharacter) {
    EXPECT_TRUE(Excludes("?.txt", "\xC3\xA9.txt"));
    EXPECT_FALSE(Excludes("?.txt", ".txt"));
    EXPECT_FALSE(Excludes("?.txt", "ab.txt"));
}

TEST(GlobFilterTest, BracketsStandForOneOfSeveralCharacters) {
    EXPECT_TRUE(Excludes("[ab0-9]x", "7x"));
    EXPECT_FALSE(Excludes("[ab0-9]x", "cx"));
    EXPECT_TRUE(Excludes("[!ab]x", "cx"));
    EXPECT_FALSE(Excludes("[!ab]x", "ax"));
}

TEST(GlobFilterTest, OneOfSeveralGlobsIsEnough) {
    GlobFilter filter({Text("a"), Text("b")});
    EXPECT_TRUE(filter.IsFileExcluded(Text("b"), 0, 2));
    EXPECT_FALSE(filter.IsFileExcluded(Text("c"), 0, 2));
    EXPECT_FALSE(GlobFilter({}).IsFileExcluded(Text("b"), 0, 2));
}

TEST(GlobFilterTest, TheEmptyComponentInFrontOfAPathIsNoFolder) {
    EXPECT_FALSE(GlobFilter({Text("*")}).IsFolderExcluded(QString(), 2));
}

TEST(GlobFilterTest, WhatCanMatchNoNameIsRefused) {
    EXPECT_THROW(GlobFilter({Text("")}), UsageError);
    EXPECT_THROW(GlobFilter({Text("a"), Text("b/c")}), UsageError);
}

}  // namespace
