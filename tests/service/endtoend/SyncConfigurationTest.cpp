#include <sys/stat.h>

#include <filesystem>

#include "tests/service/ServiceTest.h"

namespace service::test {
namespace {

const std::string Address = "/.ovs/sync-config.xml";
const std::string File = ".ovsync-service/sync-config.xml";

class SyncConfigurationTest : public ServiceTest {
protected:
    using ServiceTest::ServiceTest;

    HttpClient::Answer Get() { return Send("GET", Address); }
};

TEST_F(SyncConfigurationTest, IsNotThereUnlessSomebodyPublishesIt) {
    const auto answer = Get();
    EXPECT_EQ(answer.status, 404);
    EXPECT_THAT(answer.body, testing::HasSubstr("no sync configuration"));
    EXPECT_EQ(Status("HEAD", Address), 404);
}

TEST_F(SyncConfigurationTest, IsSentAsItIs) {
    for (const std::string& document :
         {std::string("<SyncConfig/>"), std::string("\xEF\xBB\xBF\r\n<SyncConfig>\xC3\xA4</SyncConfig>\n\n"),
          std::string("\xFF\xFE<\0S\0", 6), std::string("no XML & none at all \x01"), std::string(300000, 'x')}) {
        folder.Write(File, document);
        const auto answer = Get();
        EXPECT_EQ(answer.status, 200);
        EXPECT_EQ(answer.error, "");
        EXPECT_EQ(answer.body, document);
        EXPECT_EQ(answer.headers.at("content-type"), "application/xml");
        EXPECT_EQ(answer.headers.at("content-length"), std::to_string(document.size()));
    }
}

TEST_F(SyncConfigurationTest, MayBeEmpty) {
    folder.Write(File, "");
    const auto answer = Get();
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "");
    EXPECT_EQ(answer.headers.at("content-length"), "0");
}

TEST_F(SyncConfigurationTest, IsReadAnewForEachRequest) {
    folder.Write(File, "old");
    EXPECT_EQ(Get().body, "old");
    folder.Write("new", "new and longer");
    std::filesystem::rename(folder / "new", folder / File);
    EXPECT_EQ(Get().body, "new and longer");
    std::filesystem::remove(folder / File);
    EXPECT_EQ(Get().status, 404);
}

TEST_F(SyncConfigurationTest, HeadHasTheSameHeadersAndNoBody) {
    folder.Write(File, "<SyncConfig/>");
    const auto answer = Send("HEAD", Address);
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "");
    EXPECT_EQ(answer.headers.at("content-type"), "application/xml");
    EXPECT_EQ(answer.headers.at("content-length"), "13");
}

TEST_F(SyncConfigurationTest, OnlyAPlainFileCounts) {
    const TemporaryFolder outside;
    outside.Write("secret", "s");
    std::filesystem::create_symlink(outside / "secret", folder / File);
    EXPECT_EQ(Get().status, 404);
    std::filesystem::remove(folder / File);
    mkfifo((folder / File).c_str(), 0600);
    EXPECT_EQ(Get().status, 404);
    std::filesystem::remove(folder / File);
    std::filesystem::create_directory(folder / File);
    EXPECT_EQ(Get().status, 404);
}

TEST_F(SyncConfigurationTest, CannotBeChangedOverHttp) {
    folder.Write(File, "<SyncConfig/>");
    folder.Write("f", "x");
    for (const char* method : {"PUT", "DELETE", "MKCOL", "PROPFIND", "PROPPATCH", "OPTIONS", "COPY", "MOVE"}) {
        const auto answer = Send(method, Address, {Destination("/elsewhere")}, std::string(method) == "PUT" ? "x" : "");
        EXPECT_EQ(answer.status, 405) << method;
        EXPECT_EQ(answer.headers.at("allow"), "GET, HEAD") << method;
    }
    EXPECT_EQ(Status("MOVE", "/f", {Destination(Address)}), 403);
    EXPECT_EQ(Get().body, "<SyncConfig/>");
    EXPECT_FALSE(folder.Has("elsewhere"));
    EXPECT_TRUE(folder.Has("f"));
}

TEST(SyncConfigurationOfAServiceWithAUser, IsForTheUserAlone) {
    const TemporaryFolder folder;
    folder.Write(File, "<SyncConfig/>");
    const ServiceProcess service({folder.Path(), "--user", "ann"}, {{"OVSYNC_SERVICE_PASSWORD", "secret"}});
    HttpClient stranger(service.Port());
    const auto refused = stranger.Send("GET", Address);
    EXPECT_EQ(refused.status, 401);
    EXPECT_THAT(refused.body, testing::Not(testing::HasSubstr("SyncConfig")));
    HttpClient ann(service.Port(), "ann:secret");
    EXPECT_EQ(ann.Send("GET", Address).body, "<SyncConfig/>");
}

class FaultySyncConfigurationTest : public SyncConfigurationTest {
protected:
    FaultySyncConfigurationTest()
        : SyncConfigurationTest({"--fault", "cut=4,request=1", "--fault", "status=503,request=2", "--fault",
                                 "content-type=text/html,request=3"}) {
        folder.Write(File, "<SyncConfig/>");
    }
};

TEST_F(FaultySyncConfigurationTest, MeetsTheFaultsOfTheService) {
    const auto cut = Get();
    EXPECT_EQ(cut.body, "<Syn");
    EXPECT_NE(cut.error, "");
    EXPECT_EQ(Get().status, 503);
    EXPECT_EQ(Get().headers.at("content-type"), "text/html");
    EXPECT_EQ(Get().body, "<SyncConfig/>");
}

}  // namespace
}  // namespace service::test
