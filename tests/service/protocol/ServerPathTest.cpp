#include "service/protocol/ServerPath.h"

#include <gtest/gtest.h>

#include "service/protocol/HttpError.h"

namespace service::protocol {
namespace {

int StatusOf(const std::string& urlPath) {
    try {
        ParseUrlPath(urlPath);
        return 0;
    } catch (const HttpError& error) {
        return error.Status();
    }
}

TEST(ServerPath, IsTheDecodedPathWithoutSlashesAtItsEnds) {
    EXPECT_EQ(ParseUrlPath("/"), "");
    EXPECT_EQ(ParseUrlPath("/Projects/A/b%20c.txt"), "Projects/A/b c.txt");
    EXPECT_EQ(ParseUrlPath("/a//b/"), "a/b");
    EXPECT_EQ(ParseUrlPath("/%C3%A4%25"), "\xC3\xA4%");
}

TEST(ServerPath, RefusesNamesThatCouldLeadElsewhere) {
    for (const char* path : {"", "a", "/..", "/a/../b", "/a/.", "/%2e%2E/x", "/a%2Fb", "/a%00b", "/%FF", "/%C0%AF",
                             "/%", "/%4", "/%zz", "/%+1", "/a#b"}) {
        EXPECT_EQ(StatusOf(path), 400) << path;
    }
    EXPECT_EQ(StatusOf("/.ovsync-service/metadata.db"), 403);
    EXPECT_EQ(StatusOf("/%2Eovsync-service"), 403);
    EXPECT_EQ(StatusOf("/a/.ovsync-service"), 0);
    EXPECT_EQ(StatusOf("/" + std::string(255, 'n')), 0);
    EXPECT_EQ(StatusOf("/" + std::string(256, 'n')), 414);
}

TEST(ServerPath, IsEncodedAsHref) {
    EXPECT_EQ(Href("", true), "/");
    EXPECT_EQ(Href("a b/\xC3\xA4~-._%?#&+", false), "/a%20b/%C3%A4~-._%25%3F%23%26%2B");
    EXPECT_EQ(Href("a", true), "/a/");
}

TEST(ServerPath, IsTakenApart) {
    EXPECT_EQ(ParentPath("a/b/c"), "a/b");
    EXPECT_EQ(ParentPath("a"), "");
    EXPECT_EQ(LastSegment("a/b"), "b");
    EXPECT_EQ(LastSegment("a"), "a");
    EXPECT_TRUE(IsWithin("a/b", "a"));
    EXPECT_TRUE(IsWithin("a", "a"));
    EXPECT_TRUE(IsWithin("a", ""));
    EXPECT_FALSE(IsWithin("ab", "a"));
    EXPECT_FALSE(IsWithin("a", "a/b"));
}

}  // namespace
}  // namespace service::protocol
