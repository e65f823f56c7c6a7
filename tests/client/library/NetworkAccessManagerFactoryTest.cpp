#include "client/library/NetworkAccessManagerFactory.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <memory>

#include "client/library/RequestAuthenticatorFactory.h"
#include "tests/client/Fixtures.h"
#include "tests/client/requests/ScriptedAnswers.h"
#include "tests/fakes/CleanEnvironment.h"
#include "tests/fakes/ScriptedServer.h"
#include "tests/fakes/SelfSignedCertificate.h"

namespace ovsync {
namespace library {

using wire::ConnectionSettings;
namespace {

using tests::AnswerOf;
using tests::CleanEnvironment;
using tests::ScriptedServer;

class NetworkAccessManagerFactoryTest : public testing::Test {
protected:
    /// The reply to a GET, finished.
    std::unique_ptr<QNetworkReply> Get(const QUrl& url, const QUrl& account) {
        NetworkAccessManagerFactory factory(
            std::make_shared<RequestAuthenticatorFactory>(QStringLiteral("alice"), QStringLiteral("sesame")), 0,
            account, settings);
        manager = factory.CreateNetworkAccessManager();
        std::unique_ptr<QNetworkReply> reply(manager->get(QNetworkRequest(url)));
        QObject::connect(reply.get(), &QNetworkReply::sslErrors, reply.get(), [&] { reply->ignoreSslErrors(); });
        QEventLoop loop;
        QObject::connect(reply.get(), &QNetworkReply::finished, &loop, &QEventLoop::quit);
        loop.exec();
        return reply;
    }

    static int StatusOf(const QNetworkReply& reply) {
        return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    }

    int argumentCount = 1;
    char programName[5] = "test";
    char* arguments[2] = {programName, nullptr};
    QCoreApplication application{argumentCount, arguments};
    const CleanEnvironment environment;
    ConnectionSettings settings;
    std::shared_ptr<QNetworkAccessManager> manager;
};

TEST_F(NetworkAccessManagerFactoryTest, AnswersTheChallengeOfTheAccountsServer) {
    ScriptedServer server({AnswerOf("statuses/unauthorized-basic-401"), AnswerOf("bad/listing-with-200")});
    EXPECT_EQ(StatusOf(*Get(server.Url(QStringLiteral("/x")), server.Url(QStringLiteral("/")))), 200);
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    EXPECT_EQ(server.Requests().last().headers.value("authorization"),
              "Basic " + QByteArray("alice:sesame").toBase64());
}

TEST_F(NetworkAccessManagerFactoryTest, GivesUpWhenTheCredentialsAreWrong) {
    ScriptedServer server({AnswerOf("statuses/unauthorized-basic-401"), AnswerOf("statuses/unauthorized-basic-401")});
    EXPECT_EQ(StatusOf(*Get(server.Url(QStringLiteral("/x")), server.Url(QStringLiteral("/")))), 401);
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(NetworkAccessManagerFactoryTest, GivesTheCredentialsToNoOtherServer) {
    ScriptedServer server({AnswerOf("statuses/unauthorized-basic-401")});
    QUrl account = server.Url(QStringLiteral("/"));
    account.setPort(account.port() == 1 ? 2 : 1);
    EXPECT_EQ(StatusOf(*Get(server.Url(QStringLiteral("/x")), account)), 401);
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(NetworkAccessManagerFactoryTest, GivesTheCredentialsToNoServerThatIsNotTrusted) {
    const tests::SelfSignedCertificate certificate;
    ScriptedServer stranger({AnswerOf("statuses/unauthorized-basic-401")}, certificate.Files());
    EXPECT_EQ(StatusOf(*Get(stranger.Url(QStringLiteral("/x")), stranger.Url(QStringLiteral("/")))), 401);
    stranger.Stop();
    EXPECT_TRUE(stranger.SawItsScript());

    settings.caFile = certificate.Files().certificateFile;
    ScriptedServer trusted({AnswerOf("statuses/unauthorized-basic-401"), AnswerOf("bad/listing-with-200")},
                           certificate.Files());
    EXPECT_EQ(StatusOf(*Get(trusted.Url(QStringLiteral("/x")), trusted.Url(QStringLiteral("/")))), 200);
}

TEST_F(NetworkAccessManagerFactoryTest, GivesNoPasswordInClearToAHostThatTookItAsDigest) {
    ScriptedServer server({AnswerOf("statuses/unauthorized-basic-401")});
    settings.digestHosts->Add(server.Url(QStringLiteral("/x")));
    EXPECT_EQ(StatusOf(*Get(server.Url(QStringLiteral("/x")), server.Url(QStringLiteral("/")))), 401);
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(NetworkAccessManagerFactoryTest, TakesTheProxyFromTheEnvironment) {
    ScriptedServer proxy({AnswerOf("bad/listing-with-200")});
    qputenv("http_proxy", proxy.Url(QString()).toEncoded());
    const QUrl url(QStringLiteral("http://files.invalid/x"));
    EXPECT_EQ(StatusOf(*Get(url, url)), 200);
    proxy.Stop();
    EXPECT_EQ(proxy.Requests().first().target, "http://files.invalid/x");
}

TEST_F(NetworkAccessManagerFactoryTest, GivesUpAfterSilence) {
    settings.silenceLimit = std::chrono::milliseconds(200);
    ScriptedServer server({ScriptedServer::Answer(QByteArray(), ScriptedServer::Ending::Stall)});
    EXPECT_EQ(Get(server.Url(QStringLiteral("/x")), server.Url(QStringLiteral("/")))->error(),
              QNetworkReply::OperationCanceledError);
}

}  // namespace
}  // namespace library
}  // namespace ovsync
