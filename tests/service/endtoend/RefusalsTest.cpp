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

/// What comes over a connection of its own for `request`, whose body is longer than some think.
std::string AnswerTo(RawConnection& connection, const std::string& request) {
    connection.Send(request + "\r\n0\r\n\r\n");
    return connection.Read();
}

TEST_F(RefusalsTest, RequestsThatTwoReadersCouldTakeForDifferentOnesAreRefusedAndEndTheConnection) {
    std::vector<std::string> requests = {"PUT /f HTTP/1.0\r\nHost: x\r\nTransfer-Encoding: chunked\r\n",
                                         "PUT /f HTTP/1.1\r\nContent-Length: 5\r\n",
                                         "PUT /f HTTP/1.1\r\nHost: a b\r\nContent-Length: 5\r\n",
                                         "PUT /f g HTTP/1.1\r\nHost: x\r\nContent-Length: 5\r\n"};
    for (const char* headers :
         {"Content-Length: 3\r\nContent-Length: 5\r\n", "Content-Length: 3, 5\r\n",
          "Transfer-Encoding: chunked\r\nContent-Length: 3\r\n", "Content-Length: 3\r\nTransfer-Encoding: chunked\r\n",
          "Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked\r\n", "Transfer-Encoding: gzip\r\n",
          "Transfer-Encoding: gzip, chunked\r\n", "Host: x\r\nContent-Length: 5\r\n", "Content-Length : 5\r\n",
          "Content-Length: 5\r\na b: c\r\n", "Content-Length: 5\r\na: b\rc\r\n"}) {
        requests.push_back(std::string("PUT /f HTTP/1.1\r\nHost: x\r\n") + headers);
    }
    for (const std::string& request : requests) {
        RawConnection connection(service.Port());
        EXPECT_THAT(AnswerTo(connection, request), testing::StartsWith("HTTP/1.1 400 ")) << request;
        EXPECT_EQ(connection.End(), RawConnection::Ending::Closed) << request;
    }
    EXPECT_FALSE(folder.Has("f"));
    EXPECT_FALSE(folder.Has("f g"));
}

TEST_F(RefusalsTest, RequestsWithAClearEndAreTaken) {
    for (const char* request :
         {"PUT /f HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: Chunked\r\nConnection: close\r\n",
          "PUT /f HTTP/1.0\r\nContent-Length: 5\r\n",
          "PUT /f HTTP/1.1\r\nHost:\r\nContent-Length: 5\r\nConnection: close\r\n",
          "PUT /f HTTP/1.1\r\nHost: [::1]:80\r\nContent-Length: 5\r\na:\tb  c\r\nConnection: close\r\n"}) {
        RawConnection connection(service.Port());
        EXPECT_THAT(AnswerTo(connection, request), testing::StartsWith("HTTP/1.1 20")) << request;
    }
}

}  // namespace
}  // namespace service::test
