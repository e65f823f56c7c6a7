#include "service/tree/Preconditions.h"

#include <gtest/gtest.h>

#include "service/protocol/HttpError.h"

namespace service::tree {
namespace {

store::Resource File(std::int64_t version) {
    store::Resource file;
    file.itemId = "s-1";
    file.version = version;
    file.modified = 1795169730LL * 1000000000LL;
    return file;
}

// The status a PUT to "f", which is version 2 of a file, fails with; 0 if it does not. "other" is version 7.
int Status(const std::map<std::string, std::string>& headers, bool exists = true) {
    protocol::Request request;
    request.method = "PUT";
    request.headers = headers;
    request.headers["host"] = "h";
    const auto find = [](const std::string& path) { return path == "other" ? std::optional(File(7)) : std::nullopt; };
    try {
        Preconditions(request).Check("f", exists ? std::optional(File(2)) : std::nullopt, find);
        return 0;
    } catch (const protocol::HttpError& error) {
        return error.Status();
    }
}

TEST(Preconditions, IfMatchNeedsTheVersion) {
    EXPECT_EQ(Status({{"if-match", "\"s-1-2\""}}), 0);
    EXPECT_EQ(Status({{"if-match", "\"x\", \"s-1-2\""}}), 0);
    EXPECT_EQ(Status({{"if-match", "*"}}), 0);
    EXPECT_EQ(Status({{"if-match", "\"s-1-1\""}}), 412);
    EXPECT_EQ(Status({{"if-match", "W/\"s-1-2\""}}), 412);
    EXPECT_EQ(Status({{"if-match", "*"}}, false), 412);
    EXPECT_EQ(Status({{"if-match", "nonsense"}}), 412);
}

TEST(Preconditions, IfNoneMatchNeedsAnotherVersionOrNone) {
    EXPECT_EQ(Status({{"if-none-match", "*"}}), 412);
    EXPECT_EQ(Status({{"if-none-match", "*"}}, false), 0);
    EXPECT_EQ(Status({{"if-none-match", "\"a,b\",W/\"s-1-2\""}}), 412);
    EXPECT_EQ(Status({{"if-none-match", "\"s-1-1\""}}), 0);
}

TEST(Preconditions, IfUnmodifiedSinceNeedsAnOldFile) {
    EXPECT_EQ(Status({{"if-unmodified-since", "Fri, 20 Nov 2026 10:15:30 GMT"}}), 0);
    EXPECT_EQ(Status({{"if-unmodified-since", "Fri, 20 Nov 2026 10:15:29 GMT"}}), 412);
}

TEST(Preconditions, IfNeedsOneListThatHolds) {
    EXPECT_EQ(Status({{"if", "([\"s-1-2\"])"}}), 0);
    EXPECT_EQ(Status({{"if", "([\"s-1-1\"])"}}), 412);
    EXPECT_EQ(Status({{"if", "([\"s-1-1\"]) ([\"s-1-2\"])"}}), 0);
    EXPECT_EQ(Status({{"if", "([\"s-1-2\"] <opaquelocktoken:1>)"}}), 412);
    EXPECT_EQ(Status({{"if", "(Not <DAV:no-lock> [\"s-1-2\"])"}}), 0);
    EXPECT_EQ(Status({{"if", "(Not [\"s-1-2\"])"}}), 412);
}

TEST(Preconditions, IfCanSpeakOfOtherResources) {
    EXPECT_EQ(Status({{"if", "<http://h/other> ([\"s-1-7\"])"}}), 0);
    EXPECT_EQ(Status({{"if", "<http://h/other> ([\"s-1-2\"])"}}), 412);
    EXPECT_EQ(Status({{"if", "<http://h/f> ([\"s-1-2\"])"}}), 0);
    EXPECT_EQ(Status({{"if", "<http://h/gone> ([\"s-1-2\"])"}}), 412);
}

TEST(Preconditions, IfThatCannotBeReadIsABadRequest) {
    for (const char* text : {"x", "(", "([\"a\"", "(\"a\")", "<http://h/f>", "<http://h/f"}) {
        EXPECT_EQ(Status({{"if", text}}), 400) << text;
    }
}

}  // namespace
}  // namespace service::tree
