#include "tests/service/ServiceTest.h"

namespace service::test {
namespace {

using MethodsTest = ServiceTest;
using testing::HasSubstr;

TEST_F(MethodsTest, OptionsSaysWhatIsOffered) {
    for (const char* target : {"/", "/absent"}) {
        const auto answer = Send("OPTIONS", target);
        EXPECT_EQ(answer.status, 200) << target;
        EXPECT_EQ(answer.headers.at("dav"), "1, drovane");
        for (const char* method :
             {"OPTIONS", "GET", "HEAD", "PUT", "DELETE", "MKCOL", "COPY", "MOVE", "PROPFIND", "PROPPATCH"}) {
            EXPECT_THAT(answer.headers.at("allow"), HasSubstr(method));
        }
    }
}

TEST_F(MethodsTest, OptionsCanBeAskedOfTheServerItself) {
    RawConnection connection(service.Port());
    connection.Send("OPTIONS * HTTP/1.1\r\nHost: h\r\nConnection: close\r\n\r\n");
    const std::string answer = connection.Read();
    EXPECT_THAT(answer, testing::StartsWith("HTTP/1.1 200 "));
    EXPECT_THAT(answer, HasSubstr("DAV: 1, drovane\r\n"));
}

TEST_F(MethodsTest, TargetCanBeAWholeUrl) {
    Status("PUT", "/f", {}, "x");
    RawConnection connection(service.Port());
    connection.Send("GET " + client.Url("/f") + " HTTP/1.1\r\nHost: h\r\nConnection: close\r\n\r\n");
    EXPECT_THAT(connection.Read(), testing::StartsWith("HTTP/1.1 200 "));
}

TEST_F(MethodsTest, LockingIsNotOffered) {
    for (const char* method : {"LOCK", "UNLOCK", "POST", "SEARCH"}) {
        const auto answer = Send(method, "/");
        EXPECT_EQ(answer.status, 405) << method;
        EXPECT_THAT(answer.headers.at("allow"), HasSubstr("PROPFIND"));
        EXPECT_THAT(answer.headers.at("content-type"), HasSubstr("text/plain"));
        EXPECT_THAT(answer.body, HasSubstr(method));
    }
}

TEST_F(MethodsTest, PutMakesAndReplacesAFile) {
    const auto made = Send("PUT", "/b%20c.txt", {}, "one");
    EXPECT_EQ(made.status, 201);
    EXPECT_EQ(folder.Read("b c.txt"), "one");
    const auto replaced = Send("PUT", "/b%20c.txt", {}, "second");
    EXPECT_EQ(replaced.status, 204);
    EXPECT_EQ(folder.Read("b c.txt"), "second");
    EXPECT_NE(made.headers.at("etag"), replaced.headers.at("etag"));
    EXPECT_EQ(Send("HEAD", "/b%20c.txt").headers.at("etag"), replaced.headers.at("etag"));
}

TEST_F(MethodsTest, PutTakesALargeFileAsItIs) {
    std::string large(5000000, 'a');
    for (std::size_t i = 0; i < large.size(); i += 997) {
        large[i] = static_cast<char>(i);
    }
    EXPECT_EQ(Status("PUT", "/large", {}, large), 201);
    EXPECT_EQ(Send("GET", "/large").body, large);
    EXPECT_EQ(Status("PUT", "/chunked", {"Transfer-Encoding: chunked"}, large), 201);
    EXPECT_EQ(folder.Read("chunked"), large);
}

TEST_F(MethodsTest, PutIsRefusedWhereNoFileCanBe) {
    Status("MKCOL", "/folder");
    Status("PUT", "/file", {}, "x");
    const auto refused = Send("PUT", "/folder", {}, "x");
    EXPECT_EQ(refused.status, 405);
    EXPECT_EQ(refused.headers.at("allow"),
              "OPTIONS, GET, HEAD, DELETE, MKCOL, COPY, MOVE, PROPFIND, PROPPATCH, REPORT");
    EXPECT_EQ(Status("PUT", "/folder/", {}, "x"), 405);
    EXPECT_EQ(Status("PUT", "/", {}, "x"), 405);
    EXPECT_EQ(Status("PUT", "/new/", {}, "x"), 405);
    EXPECT_EQ(Status("PUT", "/absent/file", {}, "x"), 409);
    EXPECT_EQ(Status("PUT", "/file/file", {}, "x"), 409);
    EXPECT_EQ(Status("PUT", "/part", {"Content-Range: bytes 0-0/2"}, "x"), 400);
}

TEST_F(MethodsTest, PutHonoursIfMatchAndIfNoneMatch) {
    const std::string tag = Send("PUT", "/f", {"If-None-Match: *"}, "one").headers.at("etag");
    EXPECT_EQ(Status("PUT", "/f", {"If-None-Match: *"}, "two"), 412);
    EXPECT_EQ(Status("PUT", "/f", {"If-Match: \"other\""}, "two"), 412);
    EXPECT_EQ(Status("PUT", "/absent", {"If-Match: *"}, "two"), 412);
    EXPECT_EQ(Status("PUT", "/f", {"If: ([\"other\"])"}, "two"), 412);
    EXPECT_EQ(folder.Read("f"), "one");
    EXPECT_EQ(Status("PUT", "/f", {"If-Match: " + tag}, "two"), 204);
    EXPECT_EQ(Status("PUT", "/f", {"If-Match: " + tag}, "three"), 412);
    EXPECT_EQ(folder.Read("f"), "two");
}

TEST_F(MethodsTest, GetAnswersWithTheFileAndItsHeaders) {
    Status("PUT", "/f.txt", {}, "0123456789");
    const auto answer = Send("GET", "/f.txt");
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "0123456789");
    EXPECT_EQ(answer.headers.at("content-length"), "10");
    EXPECT_EQ(answer.headers.at("content-type"), "text/plain");
    EXPECT_EQ(Normalized(answer.headers.at("last-modified")), "DATE");
    EXPECT_EQ(Normalized(answer.headers.at("date")), "DATE");
    const auto head = Send("HEAD", "/f.txt");
    EXPECT_EQ(head.status, 200);
    EXPECT_EQ(head.body, "");
    EXPECT_EQ(head.headers.at("content-length"), "10");
    EXPECT_EQ(Status("GET", "/absent"), 404);
}

TEST_F(MethodsTest, GetAnswersWithOneRange) {
    const std::string tag = Send("PUT", "/f", {}, "0123456789").headers.at("etag");
    const auto range = [&](const std::string& text) { return Send("GET", "/f", {"Range: " + text}); };
    EXPECT_EQ(range("bytes=2-4").status, 206);
    EXPECT_EQ(range("bytes=2-4").body, "234");
    EXPECT_EQ(range("bytes=2-4").headers.at("content-range"), "bytes 2-4/10");
    EXPECT_EQ(range("bytes=7-").body, "789");
    EXPECT_EQ(range("bytes=7-99999999999999999999").body, "789");
    EXPECT_EQ(range("bytes=99999999999999999999-").status, 416);
    EXPECT_EQ(range("bytes=-3").body, "789");
    EXPECT_EQ(range("bytes=-99").body, "0123456789");
    EXPECT_EQ(range("bytes=8-99").headers.at("content-range"), "bytes 8-9/10");
    EXPECT_EQ(range("bytes=10-").status, 416);
    EXPECT_EQ(range("bytes=10-").headers.at("content-range"), "bytes */10");
    EXPECT_EQ(range("bytes=-0").status, 416);
    // What cannot be understood, and several ranges at once, may be ignored.
    for (const char* text : {"bytes=4-2", "bytes=1-2,4-5", "lines=1-2", "bytes=-", "bytes=x-2"}) {
        EXPECT_EQ(range(text).status, 200) << text;
    }
    EXPECT_EQ(Send("GET", "/f", {"Range: bytes=2-4", "If-Range: " + tag}).status, 206);
    EXPECT_EQ(Send("GET", "/f", {"Range: bytes=2-4", "If-Range: \"other\""}).status, 200);
}

TEST_F(MethodsTest, GetIsAnsweredShortlyWhenNothingChanged) {
    const auto made = Send("PUT", "/f", {}, "x");
    const std::string tag = made.headers.at("etag");
    const std::string modified = Send("HEAD", "/f").headers.at("last-modified");
    const auto unchanged = Send("GET", "/f", {"If-None-Match: " + tag});
    EXPECT_EQ(unchanged.status, 304);
    EXPECT_EQ(unchanged.body, "");
    EXPECT_EQ(unchanged.headers.at("etag"), tag);
    EXPECT_EQ(Status("GET", "/f", {"If-None-Match: \"other\", W/" + tag}), 304);
    EXPECT_EQ(Status("GET", "/f", {"If-None-Match: \"other\""}), 200);
    EXPECT_EQ(Status("GET", "/f", {"If-Modified-Since: " + modified}), 304);
    EXPECT_EQ(Status("GET", "/f", {"If-Modified-Since: Fri, 20 Nov 2015 10:15:30 GMT"}), 200);
    EXPECT_EQ(Status("GET", "/f", {"If-Modified-Since: " + modified, "If-None-Match: \"other\""}), 200);
    EXPECT_EQ(Status("GET", "/f", {"If-Match: \"other\""}), 412);
}

TEST_F(MethodsTest, GetOfACollectionNamesItsChildren) {
    Status("MKCOL", "/d");
    Status("MKCOL", "/d/inner");
    Status("PUT", "/d/f", {}, "x");
    EXPECT_EQ(Send("GET", "/d").body, "f\ninner/\n\n");
}

TEST_F(MethodsTest, MkcolMakesACollectionOnce) {
    EXPECT_EQ(Status("MKCOL", "/d"), 201);
    EXPECT_TRUE(std::filesystem::is_directory(folder / "d"));
    EXPECT_EQ(Status("MKCOL", "/d/e/"), 201);
    EXPECT_EQ(Status("MKCOL", "/d"), 405);
    EXPECT_EQ(Status("MKCOL", "/"), 405);
    EXPECT_EQ(Status("MKCOL", "/absent/d"), 409);
    EXPECT_EQ(Status("MKCOL", "/new", {}, "<mkcol/>"), 415);
    EXPECT_EQ(Status("PROPFIND", "/new"), 404);
}

TEST_F(MethodsTest, DeleteRemovesWholeTrees) {
    Status("MKCOL", "/d");
    Status("PUT", "/d/f", {}, "x");
    const std::string tag = Send("PUT", "/f", {}, "x").headers.at("etag");
    EXPECT_EQ(Status("DELETE", "/d", {"Depth: 1"}), 400);
    EXPECT_EQ(Status("DELETE", "/d"), 204);
    EXPECT_EQ(Status("DELETE", "/d"), 404);
    EXPECT_EQ(Status("GET", "/d/f"), 404);
    EXPECT_FALSE(folder.Has("d"));
    EXPECT_EQ(Status("DELETE", "/f", {"If-Match: \"other\""}), 412);
    EXPECT_EQ(Status("DELETE", "/f", {"If-Match: " + tag}), 204);
    EXPECT_EQ(Status("DELETE", "/"), 403);
}

TEST_F(MethodsTest, CopyAndMoveAnswerAsWebDavSays) {
    for (const char* method : {"COPY", "MOVE"}) {
        Status("PUT", "/from", {}, "x");
        EXPECT_EQ(Status(method, "/from"), 400);
        EXPECT_EQ(Status(method, "/from", {"Destination: http://127.0.0.1:1/to"}), 502);
        EXPECT_EQ(Status(method, "/from", {Destination("/absent/to")}), 409);
        EXPECT_EQ(Status(method, "/from", {Destination("/from")}), 403);
        EXPECT_EQ(Status(method, "/from", {Destination("/.ovsync-service/to")}), 403);
        EXPECT_EQ(Status(method, "/absent", {Destination("/to")}), 404);
        EXPECT_EQ(Status(method, "/from", {Destination("/to"), "Depth: 1"}), 400);
        EXPECT_EQ(Status(method, "/from", {Destination("/to")}), 201);
        Status("PUT", "/from", {}, "newer");
        EXPECT_EQ(Status(method, "/from", {Destination("/to"), "Overwrite: F"}), 412);
        EXPECT_EQ(folder.Read("to"), "x");
        EXPECT_EQ(Status(method, "/from", {"Destination: /to"}), 204);
        EXPECT_EQ(folder.Read("to"), "newer");
        EXPECT_EQ(folder.Has("from"), std::string(method) == "COPY");
        Status("DELETE", "/to");
    }
}

TEST_F(MethodsTest, MoveKeepsTheIdsAndCopyGivesNewOnes) {
    Status("PUT", "/f", {}, "x");
    auto before = Properties(client, "/f");
    EXPECT_EQ(Status("COPY", "/f", {Destination("/copy")}), 201);
    auto copy = Properties(client, "/copy");
    EXPECT_NE(copy["resourceid"], before["resourceid"]);
    EXPECT_NE(copy["itemid"], before["itemid"]);
    EXPECT_EQ(copy["checksummd5"], before["checksummd5"]);
    EXPECT_EQ(Status("MOVE", "/f", {Destination("/moved")}), 201);
    auto moved = Properties(client, "/moved");
    EXPECT_EQ(moved["resourceid"], before["resourceid"]);
    EXPECT_EQ(moved["itemid"], before["itemid"]);
    EXPECT_EQ(moved["displayname"], "moved");
}

TEST_F(MethodsTest, ConnectionIsUsedAgain) {
    EXPECT_EQ(Send("PUT", "/f", {}, "x").connections, 1);
    EXPECT_EQ(Send("GET", "/f").connections, 0);
    EXPECT_EQ(Send("GET", "/absent").connections, 0);
    EXPECT_EQ(Send("PROPFIND", "/").connections, 0);
}

TEST_F(MethodsTest, UploadThatIsCutOffChangesNothing) {
    Status("PUT", "/f", {}, "old");
    auto before = Properties(client, "/f");
    {
        RawConnection connection(service.Port());
        connection.Send("PUT /f HTTP/1.1\r\nHost: h\r\nContent-Length: 1000\r\n\r\nnew");
        RawConnection chunked(service.Port());
        chunked.Send("PUT /g HTTP/1.1\r\nHost: h\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nnew\r\n");
        EXPECT_EQ(connection.Read(100), "");
    }
    EXPECT_EQ(Send("GET", "/f").body, "old");
    EXPECT_EQ(Properties(client, "/f"), before);
    EXPECT_EQ(Status("GET", "/g"), 404);
}

TEST_F(MethodsTest, EveryAnswerHasADate) {
    Status("PUT", "/f", {}, "x");
    for (const char* method :
         {"OPTIONS", "GET", "HEAD", "PUT", "DELETE", "MKCOL", "COPY", "MOVE", "PROPFIND", "PROPPATCH", "LOCK"}) {
        EXPECT_EQ(Normalized(Send(method, "/f").headers["date"]), "DATE") << method;
    }
    RawConnection malformed(service.Port());
    malformed.Send("GET /f HTTP/1.1\r\nHost: h\r\nContent-Length: x\r\n\r\n");
    const std::string answer = malformed.Read();
    EXPECT_THAT(answer, testing::StartsWith("HTTP/1.1 400 "));
    EXPECT_THAT(Normalized(answer), HasSubstr("Date: DATE\r\n"));
}

}  // namespace
}  // namespace service::test
