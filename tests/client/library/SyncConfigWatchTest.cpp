#include "client/library/SyncConfigWatch.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QNetworkReply>
#include <ostream>

#include "client/library/NetworkAccessManagerFactory.h"
#include "client/library/RequestAuthenticatorFactory.h"
#include "host/core/SyncException.h"
#include "host/http/HttpException.h"
#include "tests/client/Fixtures.h"
#include "tests/client/requests/ScriptedAnswers.h"
#include "tests/fakes/CleanEnvironment.h"
#include "tests/fakes/Printers.h"
#include "tests/fakes/ScriptedServer.h"
#include "tests/fakes/SelfSignedCertificate.h"

namespace ovsync {
namespace library {

using wire::ConnectionSettings;
namespace {

using testing::AllOf;
using testing::HasSubstr;
using tests::AnswerOf;
using tests::CleanEnvironment;
using tests::FixtureAnswer;
using tests::ScriptedServer;

using Ending = ScriptedServer::Ending;

/// Fetches through a watch as a library does.
class SyncConfigWatchTest : public testing::Test {
protected:
    void Fetch(const QUrl& url) {
        watch = std::make_unique<SyncConfigWatch>(std::make_shared<NetworkAccessManagerFactory>(
            std::make_shared<RequestAuthenticatorFactory>(QStringLiteral("alice"), QStringLiteral("sesame")), 0, url,
            settings));
        const std::shared_ptr<QNetworkAccessManager> manager = watch->CreateNetworkAccessManager();
        QEventLoop loop;
        QObject::connect(manager.get(), &QNetworkAccessManager::sslErrors,
                         [](QNetworkReply* reply, const QList<QSslError>&) { reply->ignoreSslErrors(); });
        QObject::connect(manager.get(), &QNetworkAccessManager::finished, [&](QNetworkReply* reply) {
            if (reply->error() == QNetworkReply::NoError) {
                body = reply->readAll();
            }
            loop.quit();
        });
        manager->get(QNetworkRequest(url));
        loop.exec();
    }

    void FetchFixture(const char* name, Ending ending = Ending::Close) {
        ScriptedServer server(
            {ScriptedServer::Answer(FixtureAnswer(QLatin1String("settings/") + QLatin1String(name)).Bytes(), ending)});
        Fetch(server.Url(QStringLiteral("/.ovs/sync-config.xml")));
    }

    std::string Problem() const {
        try {
            watch->RequireDocument();
            return "none";
        } catch (const sync::http::HttpException& e) {
            return "refused: " + e.Utf8Message();
        } catch (const sync::core::SyncException& e) {
            return e.Utf8Message();
        }
    }

    int argumentCount = 1;
    char programName[5] = "test";
    char* arguments[2] = {programName, nullptr};
    QCoreApplication application{argumentCount, arguments};
    const CleanEnvironment environment;
    ConnectionSettings settings;
    std::unique_ptr<SyncConfigWatch> watch;
    QByteArray body;
};

TEST_F(SyncConfigWatchTest, TheWatchedReplyIsStillThereForTheLibrary) {
    FetchFixture("whole-200");
    EXPECT_EQ(body, FixtureAnswer(QStringLiteral("settings/whole-200")).body);
}

TEST_F(SyncConfigWatchTest, ADocumentMayHoldNothingOrStartLate) {
    for (const char* name : {"whole-200", "nothing-in-it-200", "mark-and-blank-line-first-200"}) {
        FetchFixture(name);
        EXPECT_EQ(Problem(), "none") << name;
    }
}

TEST_F(SyncConfigWatchTest, ARefusalHasItsStatus) {
    ScriptedServer server({AnswerOf("statuses/not-found-404")});
    Fetch(server.Url(QStringLiteral("/.ovs/sync-config.xml")));
    try {
        watch->RequireDocument();
        ADD_FAILURE();
    } catch (const sync::http::HttpException& e) {
        EXPECT_EQ(e.StatusCode(), 404);
        EXPECT_EQ(e.Url(), server.Url(QStringLiteral("/.ovs/sync-config.xml")));
        EXPECT_THAT(e.Utf8Message(), AllOf(HasSubstr("/.ovs/sync-config.xml"), HasSubstr("404")));
    }
    EXPECT_EQ(watch->LastAnswer().status, 404);
    EXPECT_THAT(watch->LastAnswer().Text().toStdString(), HasSubstr("the body begins: "));
}

TEST_F(SyncConfigWatchTest, ARefusalByAServerThatIsNotTrustedSaysSo) {
    const tests::SelfSignedCertificate certificate;
    ScriptedServer server({AnswerOf("statuses/unauthorized-basic-401"), AnswerOf("settings/whole-200")},
                          certificate.Files());
    Fetch(server.Url(QStringLiteral("/x")));
    EXPECT_THAT(Problem(), AllOf(HasSubstr("refused: "), HasSubstr("401"), HasSubstr("certificate is not trusted")));
    Fetch(server.Url(QStringLiteral("/x")));
    EXPECT_EQ(Problem(), "none") << "the library takes any certificate";
}

TEST_F(SyncConfigWatchTest, NoAnswerIsNoDocument) {
    ScriptedServer server({ScriptedServer::Answer(QByteArray(), Ending::Reset)});
    Fetch(server.Url(QStringLiteral("/x")));
    EXPECT_THAT(Problem(), AllOf(HasSubstr("GET http://127.0.0.1:"), HasSubstr("/x failed: "), HasSubstr("no answer")));
}

TEST_F(SyncConfigWatchTest, SilenceIsNoDocument) {
    settings.silenceLimit = std::chrono::milliseconds(200);
    FetchFixture("cut-off-200", Ending::Stall);
    EXPECT_THAT(Problem(), HasSubstr("nothing was heard for too long"));
}

TEST_F(SyncConfigWatchTest, NoRequestIsNoDocument) {
    const SyncConfigWatch unused(nullptr);
    EXPECT_THROW(unused.RequireDocument(), sync::core::SyncException);
}

struct NoDocument {
    const char* fixture;
    const char* problem;
};

void PrintTo(const NoDocument& answer, std::ostream* stream) {
    *stream << answer.fixture;
}

class NoSyncConfigTest : public SyncConfigWatchTest, public testing::WithParamInterface<NoDocument> {};

TEST_P(NoSyncConfigTest, IsNamedWithWhatIsWrong) {
    FetchFixture(GetParam().fixture);
    EXPECT_THAT(Problem(), AllOf(HasSubstr("/.ovs/sync-config.xml failed: "), HasSubstr(GetParam().problem),
                                 HasSubstr("(status 200, content type ")));
}

INSTANTIATE_TEST_SUITE_P(
    Answers, NoSyncConfigTest,
    testing::Values(NoDocument{"html-200", "its root is <html>"},
                    NoDocument{"login-page-200", "declares a document type"},
                    NoDocument{"foreign-namespace-200", "its root is <SyncConfig> in the namespace \"urn:other\""},
                    NoDocument{"nested-too-deep-200", "deeper than 100"},
                    NoDocument{"empty-200", "the document is empty"}, NoDocument{"cut-off-200", "closed"},
                    NoDocument{"unended-200", "line 2, column"}, NoDocument{"mismatched-200", "line 2, column"},
                    NoDocument{"more-after-the-root-200", "line 2, column"},
                    NoDocument{"utf-16-200", "not well-formed, line 1"},
                    NoDocument{"entity-unknown-200", "not well-formed, line 1"}));

TEST_F(SyncConfigWatchTest, ARedirectIsNoDocument) {
    ScriptedServer server({AnswerOf("bad/moved-301")});
    Fetch(server.Url(QStringLiteral("/x")));
    EXPECT_THAT(Problem(), AllOf(HasSubstr("the status is unexpected"), HasSubstr("status 301")));
}

}  // namespace
}  // namespace library
}  // namespace ovsync
