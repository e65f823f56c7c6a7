#include "tests/service/ServiceTest.h"

namespace service::test {
namespace {

using testing::HasSubstr;

TEST(CommandLine, HelpSaysHowToUseIt) {
    const auto result = ServiceProcess::Run({"--help"});
    EXPECT_EQ(result.exitCode, 0);
    for (const char* part : {"DIR", "--port", "--user", "OVSYNC_SERVICE_PASSWORD", "--fault", "hang", "drip",
                             "--seed-files", "--seed-folders", "--seed-folder", "--verbose"}) {
        EXPECT_THAT(result.output, HasSubstr(part));
    }
}

TEST(CommandLine, SaysWhereItServesAndStopsCleanly) {
    const TemporaryFolder folder;
    for (const int signal : {SIGTERM, SIGINT}) {
        ServiceProcess service({folder.Path()});
        EXPECT_EQ(service.FirstLine(),
                  "Serving " + folder.Path() + " on http://127.0.0.1:" + std::to_string(service.Port()) + "/");
        EXPECT_EQ(service.End(signal), 0);
    }
}

TEST(CommandLine, StopsCleanlyWhileAnswersHangOrDrip) {
    const TemporaryFolder folder;
    ServiceProcess service({folder.Path(), "--fault", "hang,method=GET", "--fault", "drip,method=PROPFIND"});
    RawConnection hanging(service.Port());
    hanging.Send("GET / HTTP/1.1\r\nHost: h\r\n\r\n");
    RawConnection dripping(service.Port());
    dripping.Send("PROPFIND / HTTP/1.1\r\nHost: h\r\n\r\n");
    EXPECT_EQ(hanging.Read(200), "");
    EXPECT_EQ(service.End(SIGTERM), 0);
}

TEST(CommandLine, WrongUsageIsNamed) {
    const TemporaryFolder folder;
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
        {{}, "DIR"},
        {{folder.Path(), "--port", "65536"}, "65536"},
        {{folder.Path(), "--port", "http"}, "http"},
        {{folder.Path(), "--prot", "1"}, "--prot"},
        {{folder.Path(), "--fault", "explode"}, "explode"},
        {{folder.Path(), "--fault", "hang", "--fault", "cut=x"}, "cut=x"},
        {{folder.Path(), "--seed-files", "-1"}, "-1"},
        {{folder.Path(), "--seed-folders", "2"}, "--seed-files"},
        {{folder.Path(), "--seed-files", "1", "--seed-folders", "x"}, "x"},
        {{folder.Path(), "--seed-folder", "a/b"}, "a/b"},
        {{folder.Path(), "--seed-folder", ".ovs"}, ".ovs"},
        {{folder.Path(), "--seed-folder", ".."}, ".."},
        {{folder.Path(), "--seed-folder", ".ovsync-service"}, ".ovsync-service"},
        {{folder.Path(), "--user", "anna"}, "OVSYNC_SERVICE_PASSWORD"},
        {{folder.Path(), "--user", "an:na"}, "--user"},
        {{folder.Path(), "--user", ""}, "--user"},
    };
    for (const auto& [arguments, named] : cases) {
        const auto result = ServiceProcess::Run(arguments);
        EXPECT_EQ(result.exitCode, 2) << named;
        EXPECT_THAT(result.errors, HasSubstr(named));
    }
}

TEST(CommandLine, FolderThatCannotBeServedIsNamed) {
    const TemporaryFolder folder;
    folder.Write("file", "x");
    const auto absent = ServiceProcess::Run({folder / "absent"});
    EXPECT_EQ(absent.exitCode, 1);
    EXPECT_THAT(absent.errors, HasSubstr(folder / "absent"));
    const auto file = ServiceProcess::Run({folder / "file"});
    EXPECT_EQ(file.exitCode, 1);
    EXPECT_THAT(file.errors, HasSubstr(folder / "file"));
    EXPECT_EQ(folder.Read("file"), "x");
}

TEST(CommandLine, FolderOrPortThatIsTakenIsNamed) {
    const TemporaryFolder folder;
    const TemporaryFolder other;
    const ServiceProcess service({folder.Path()});
    const auto sameFolder = ServiceProcess::Run({folder.Path(), "--port", "0"});
    EXPECT_EQ(sameFolder.exitCode, 1);
    EXPECT_THAT(sameFolder.errors, HasSubstr(folder.Path()));
    const auto samePort = ServiceProcess::Run({other.Path(), "--port", std::to_string(service.Port())});
    EXPECT_EQ(samePort.exitCode, 1);
    EXPECT_THAT(samePort.errors, HasSubstr(std::to_string(service.Port())));
}

TEST(CommandLine, DamagedDatabaseIsNamedAndLeftAlone) {
    const TemporaryFolder folder;
    const std::string damaged(10000, 'x');
    folder.Write("f", "kept");
    folder.Write(".ovsync-service/metadata.db", damaged);
    const auto result = ServiceProcess::Run({folder.Path()});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors, HasSubstr("metadata.db"));
    EXPECT_EQ(folder.Read(".ovsync-service/metadata.db"), damaged);
    EXPECT_EQ(folder.Read("f"), "kept");
}

TEST(CommandLine, SeedingIsDoneOnce) {
    const TemporaryFolder folder;
    const std::vector<std::string> arguments{folder.Path(), "--seed-files", "20"};
    std::map<std::string, std::string> first;
    {
        const ServiceProcess service(arguments);
        HttpClient client(service.Port());
        first = Properties(client, "/seeded/file-000020.txt");
    }
    const ServiceProcess service(arguments);
    HttpClient client(service.Port());
    EXPECT_EQ(Properties(client, "/seeded/file-000020.txt"), first);
    EXPECT_EQ(Properties(client, "/seeded/file-000021.txt").size(), 0U);
}

}  // namespace
}  // namespace service::test
