#include "tests/service/ServiceTest.h"

namespace service::test {
namespace {

using RefusalsTest = ServiceTest;

TEST_F(RefusalsTest, NothingOutsideTheFolderIsReachable) {
    for (const char* target : {"/../etc/passwd", "/%2e%2e/etc/passwd", "/a/../../etc/passwd", "/..%2fetc%2fpasswd",
                               "/%2Fetc%2Fpasswd", "/a%00b", "/%FFa", "/.", "/%"}) {
        for (const char* method : {"GET", "PUT", "DELETE", "MKCOL", "PROPFIND", "PROPPATCH", "OPTIONS"}) {
            EXPECT_EQ(Status(method, target, {}, std::string(method) == "PUT" ? "x" : ""), 400)
                << method << " " << target;
        }
        Send("PUT", "/f", {}, "x");
        EXPECT_EQ(Status("COPY", "/f", {Destination(target)}), 400) << target;
        EXPECT_EQ(Status("MOVE", "/f", {Destination(target)}), 400) << target;
    }
}

TEST_F(RefusalsTest, OwnFolderOfTheServiceIsNeitherListedNorReachable) {
    Send("PUT", "/f", {}, "x");
    EXPECT_THAT(Send("PROPFIND", "/").body, testing::Not(testing::HasSubstr("ovsync-service")));
    EXPECT_THAT(Send("GET", "/").body, testing::Not(testing::HasSubstr("ovsync-service")));
    for (const char* target : {"/.ovsync-service", "/.ovsync-service/metadata.db", "/%2eovsync-service/work"}) {
        for (const char* method : {"GET", "PUT", "DELETE", "MKCOL", "PROPFIND", "PROPPATCH"}) {
            const std::string body =
                std::string(method) == "PROPPATCH"
                    ? "<D:propertyupdate xmlns:D='DAV:'><D:remove><D:prop><x/></D:prop></D:remove></D:propertyupdate>"
                : std::string(method) == "PUT" ? "x"
                                               : "";
            EXPECT_EQ(Status(method, target, {}, body), 403) << method << " " << target;
        }
        EXPECT_EQ(Status("MOVE", "/f", {Destination(target)}), 403);
    }
}

TEST_F(RefusalsTest, TooMuchIsTooMuch) {
    EXPECT_EQ(Status("PROPFIND", "/", {}, std::string(1024 * 1024 + 1, ' ')), 413);
    EXPECT_EQ(Status("PUT", "/" + std::string(256, 'n'), {}, "x"), 414);
}

TEST_F(RefusalsTest, BodiesThatCannotBeReadAreBadRequests) {
    for (const char* body : {"<", "x", "<a/>", "<!DOCTYPE a [<!ENTITY b 'c'>]><D:propfind xmlns:D='DAV:'/>"}) {
        const auto answer = Send("PROPFIND", "/", {}, body);
        EXPECT_EQ(answer.status, 400) << body;
        EXPECT_THAT(answer.headers.at("content-type"), testing::HasSubstr("text/plain"));
        EXPECT_GT(answer.body.size(), 10U);
        EXPECT_EQ(Status("PROPPATCH", "/", {}, body), 400) << body;
    }
    EXPECT_EQ(Status("PROPPATCH", "/absent", {},
                     "<D:propertyupdate xmlns:D='DAV:'><D:remove><D:prop><x/></D:prop></D:remove>"
                     "</D:propertyupdate>"),
              404);
}

}  // namespace
}  // namespace service::test
