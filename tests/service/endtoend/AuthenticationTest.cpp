#include "tests/service/ServiceTest.h"

namespace service::test {
namespace {

class AuthenticationTest : public testing::Test {
protected:
    TemporaryFolder folder;
    ServiceProcess service{{folder.Path(), "--user", "anna"}, {{"OVSYNC_SERVICE_PASSWORD", "p:a\xC3\xA4ss"}}};
};

TEST_F(AuthenticationTest, LetsTheUserIn) {
    HttpClient client(service.Port(), "anna:p:a\xC3\xA4ss");
    EXPECT_EQ(client.Send("PUT", "/f", {}, "x").status, 201);
    EXPECT_EQ(Properties(client, "/f")["ownerid"], "anna");
    HttpClient other(service.Port());
    EXPECT_EQ(other.Send("GET", "/f", {"Authorization: bAsIc YW5uYTpwOmHDpHNz"}).status, 200);
}

TEST_F(AuthenticationTest, TurnsOthersAwayAndChangesNothingForThem) {
    for (const char* who : {"", "anna:", "anna:wrong", "berta:p:a\xC3\xA4ss", "anna:p:a\xC3\xA4ss2"}) {
        HttpClient client(service.Port(), who);
        for (const char* method : {"OPTIONS", "GET", "PUT", "PROPFIND", "DELETE", "LOCK"}) {
            const auto answer = client.Send(method, "/f", {}, std::string(method) == "PUT" ? "x" : "");
            EXPECT_EQ(answer.status, 401) << who << " " << method;
            EXPECT_THAT(answer.headers.at("www-authenticate"), testing::StartsWith("Basic realm="));
            EXPECT_EQ(Normalized(answer.headers.at("date")), "DATE");
        }
    }
    EXPECT_FALSE(folder.Has("f"));
    HttpClient malformed(service.Port());
    EXPECT_EQ(malformed.Send("GET", "/", {"Authorization: Basic !!!"}).status, 401);
    EXPECT_EQ(malformed.Send("GET", "/", {"Authorization: Basic YW5uYTpwOmHDpHNz="}).status, 401);
    EXPECT_EQ(malformed.Send("GET", "/", {"Authorization: Bearer abc"}).status, 401);
}

TEST_F(AuthenticationTest, LeavesTheConnectionUsableAfterARefusal) {
    HttpClient client(service.Port());
    EXPECT_EQ(client.Send("PUT", "/f", {}, std::string(100000, 'x')).status, 401);
    const auto second = client.Send("GET", "/f");
    EXPECT_EQ(second.status, 401);
    EXPECT_EQ(second.connections, 0);
}

}  // namespace
}  // namespace service::test
