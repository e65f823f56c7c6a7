#include <signal.h>
#include <sys/stat.h>

#include <chrono>
#include <thread>

#include "tests/service/ServiceTest.h"

namespace service::test {
namespace {

using HandPlacedFilesTest = ServiceTest;

TEST_F(HandPlacedFilesTest, AreServedLikeAnyOther) {
    folder.Write("Projects/A/b c.txt", "hello");
    auto values = Properties(client, "/Projects/A/b%20c.txt");
    EXPECT_EQ(values["checksummd5"], "5d41402abc4b2a76b9719d911017c592");
    EXPECT_EQ(values["version"], "1");
    EXPECT_EQ(values["ownerid"], "anonymous");
    EXPECT_EQ(Send("GET", "/Projects/A/b%20c.txt").body, "hello");
    EXPECT_EQ(Status("PUT", "/Projects/A/b%20c.txt", {}, "changed"), 204);
    EXPECT_EQ(Properties(client, "/Projects/A/b%20c.txt")["resourceid"], values["resourceid"]);
}

TEST_F(HandPlacedFilesTest, ThatChangeHaveANewVersionAndChecksum) {
    folder.Write("f", "hello");
    auto before = Properties(client, "/f");
    const std::string tag = Send("GET", "/f").headers.at("etag");
    folder.Write("f", "longer text");
    EXPECT_EQ(Status("PUT", "/f", {"If-Match: " + tag}, "lost update"), 412);
    auto after = Properties(client, "/f");
    EXPECT_EQ(after["version"], "2");
    EXPECT_EQ(after["resourceid"], before["resourceid"]);
    EXPECT_EQ(after["checksummd5"], "8a459e8b3f36a46f53288c5d98dd361c");
    EXPECT_EQ(Send("GET", "/f").body, "longer text");
}

TEST_F(HandPlacedFilesTest, ThatAreLargeAreListedAtOnceAndGetTheirChecksumLater) {
    folder.Write("large", "");
    std::filesystem::resize_file(folder / "large", 20000000);
    folder.Write("small", "hello");
    EXPECT_EQ(Properties(client, "/large").count("checksummd5"), 0U);
    EXPECT_EQ(Properties(client, "/small")["checksummd5"], "5d41402abc4b2a76b9719d911017c592");
    const std::string tag = Send("GET", "/large").headers.at("etag");
    while (Properties(client, "/large").count("checksummd5") == 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    auto values = Properties(client, "/large");
    EXPECT_EQ(values["checksummd5"], "10e4462c9d0b08e7f0b304c4fbfeafa3");
    EXPECT_EQ(values["version"], "1");
    EXPECT_EQ(values["getetag"], tag);
}

TEST_F(HandPlacedFilesTest, ThatAreHugeKeepTheServiceFromNothing) {
    folder.Write("huge", "");
    std::filesystem::resize_file(folder / "huge", std::uintmax_t{1} << 40U);
    EXPECT_EQ(Properties(client, "/huge").count("checksummd5"), 0U);
    EXPECT_EQ(Status("PUT", "/f", {}, "x"), 201);
    EXPECT_EQ(Status("DELETE", "/huge"), 204);
    folder.Write("huge", "");
    std::filesystem::resize_file(folder / "huge", std::uintmax_t{1} << 40U);
    EXPECT_EQ(Properties(client, "/huge")["getcontentlength"], "1099511627776");
    EXPECT_EQ(service.End(SIGTERM), 0);
}

TEST_F(HandPlacedFilesTest, ThatAreTakenAwayDoNotHoldUpTheChecksumsOfOthers) {
    folder.Write("a", "");
    std::filesystem::resize_file(folder / "a", std::uintmax_t{1} << 40U);
    Properties(client, "/a");
    EXPECT_EQ(Status("DELETE", "/a"), 204);
    folder.Write("b", "");
    std::filesystem::resize_file(folder / "b", 20000000);
    while (Properties(client, "/b").count("checksummd5") == 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

TEST_F(HandPlacedFilesTest, CopyForAClientThatHasLeftEnds) {
    folder.Write("huge", "");
    std::filesystem::resize_file(folder / "huge", std::uintmax_t{1} << 40U);
    {
        RawConnection impatient(service.Port());
        impatient.Send("COPY /huge HTTP/1.1\r\nHost: x\r\nDestination: /copy\r\n\r\n");
        EXPECT_EQ(impatient.Read(200), "");
    }
    EXPECT_EQ(Status("GET", "/copy"), 404);
    EXPECT_TRUE(std::filesystem::is_empty(folder / ".ovsync-service/work"));
}

TEST_F(HandPlacedFilesTest, ThatAreTakenAwayVanish) {
    folder.Write("d/f", "hello");
    EXPECT_EQ(Multistatus(Send("PROPFIND", "/").body).responses.size(), 3U);
    std::filesystem::remove_all(folder / "d");
    EXPECT_EQ(Multistatus(Send("PROPFIND", "/").body).responses.size(), 1U);
    EXPECT_EQ(Status("GET", "/d/f"), 404);
}

TEST_F(HandPlacedFilesTest, LinksAndPipesAreNotServed) {
    std::filesystem::create_symlink("/", folder / "root");
    std::filesystem::create_symlink("/etc/passwd", folder / "passwd");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(Multistatus(Send("PROPFIND", "/").body).responses.size(), 1U);
    for (const char* target : {"/passwd", "/pipe", "/root", "/root/etc/passwd"}) {
        EXPECT_EQ(Status("GET", target), 404) << target;
        EXPECT_EQ(Status("DELETE", target), 404) << target;
        EXPECT_EQ(Status("COPY", target, {Destination("/copy")}), 404) << target;
    }
    EXPECT_EQ(Status("PUT", "/passwd", {}, "x"), 403);
    EXPECT_EQ(Status("PUT", "/pipe", {}, "x"), 403);
    EXPECT_EQ(Status("PUT", "/root/x", {}, "x"), 409);
}

}  // namespace
}  // namespace service::test
