#include "client/content/ResourceConnection.h"

#include <gmock/gmock.h>

#include "client/wire/TransactionError.h"
#include "host/http/HttpException.h"
#include "tests/client/requests/ScriptedAnswers.h"
#include "tests/fakes/CleanEnvironment.h"

namespace ovsync {
namespace content {

using wire::TransactionError;
namespace {

using sync::http::HttpException;
using testing::HasSubstr;
using tests::AnswerOf;
using tests::CleanEnvironment;
using tests::ScriptedServer;

using Overwriting = ResourceConnection::Overwriting;

class ResourceConnectionTest : public testing::Test {
protected:
    const CleanEnvironment environment;
    ResourceConnection session{wire::ConnectionSettings(), QAuthenticator()};
};

TEST_F(ResourceConnectionTest, EachOperationSaysWhatItMeans) {
    ScriptedServer server({AnswerOf("folders/status-204"), AnswerOf("folders/status-201"),
                           AnswerOf("folders/status-201"), AnswerOf("folders/status-204")});
    const QUrl from = server.Url(QStringLiteral("/a%20b"));
    const QUrl to = server.Url(QStringLiteral("/c%23d"));
    session.Remove(from);
    session.Move(from, to, Overwriting::No);
    session.Copy(from, to, Overwriting::No);
    session.Copy(from, to, Overwriting::Yes);
    server.Stop();
    ASSERT_TRUE(server.SawItsScript());
    const QList<ScriptedServer::Request>& requests = server.Requests();
    EXPECT_EQ(requests[0].method, "DELETE");
    EXPECT_FALSE(requests[0].headers.contains("destination"));
    EXPECT_EQ(requests[1].method, "MOVE");
    EXPECT_EQ(requests[1].headers.value("destination"), to.toEncoded());
    EXPECT_EQ(requests[1].headers.value("overwrite"), "F");
    EXPECT_EQ(requests[2].method, "COPY");
    EXPECT_EQ(requests[2].headers.value("destination"), to.toEncoded());
    EXPECT_EQ(requests[2].headers.value("depth"), "infinity");
    EXPECT_EQ(requests[2].headers.value("overwrite"), "F");
    EXPECT_EQ(requests[3].headers.value("overwrite"), "T");
    for (const ScriptedServer::Request& request : requests) {
        EXPECT_EQ(request.target, "/a%20b");
        EXPECT_FALSE(request.headers.contains("x-ovs-version"));
        EXPECT_EQ(request.connection, 1);
    }
}

TEST_F(ResourceConnectionTest, OnlyWhatSaysThatAllIsDoneIsTakenForDone) {
    for (const char* answer :
         {"folders/status-200", "folders/status-201", "folders/status-202", "folders/status-204"}) {
        ScriptedServer server({AnswerOf(answer)});
        EXPECT_NO_THROW(session.Remove(server.Url(QStringLiteral("/a")))) << answer;
    }
    for (const char* answer :
         {"folders/status-203", "folders/status-206", "folders/status-207", "folders/status-301", "folders/status-302",
          "folders/status-304", "statuses/forbidden-403", "statuses/not-found-404", "folders/status-412",
          "statuses/locked-423", "statuses/broken-500"}) {
        SCOPED_TRACE(answer);
        ScriptedServer server({AnswerOf(answer)});
        const QUrl url = server.Url(QStringLiteral("/a"));
        try {
            session.Move(url, url, Overwriting::No);
            ADD_FAILURE();
        } catch (const HttpException& error) {
            const std::string status = std::string(answer).substr(std::string(answer).size() - 3);
            EXPECT_EQ(std::to_string(error.StatusCode()), status);
            EXPECT_EQ(error.Url(), url);
            EXPECT_THAT(error.Utf8Message(), HasSubstr("MOVE http://127.0.0.1"));
        }
    }
}

TEST_F(ResourceConnectionTest, AnAnswerThatIsCutOffIsAnError) {
    ScriptedServer server({AnswerOf("bad/nothing", ScriptedServer::Ending::Close)});
    EXPECT_THROW(session.Remove(server.Url(QStringLiteral("/a"))), TransactionError);
}

}  // namespace
}  // namespace content
}  // namespace ovsync
