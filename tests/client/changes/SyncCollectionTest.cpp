#include "client/changes/SyncCollection.h"

#include <gmock/gmock.h>

#include "client/library/ServiceConnection.h"
#include "client/wire/TransactionError.h"
#include "host/http/HttpException.h"
#include "tests/client/changes/ChangeSourceTest.h"
#include "tests/client/requests/ScriptedAnswers.h"
#include "tests/fakes/ScriptedServer.h"

namespace ovsync {
namespace changes {
namespace {

using library::ServiceConnection;
using testing::HasSubstr;
using tests::AnswerOf;
using tests::OptionsStep;
using tests::ScriptedServer;
using Answer = ServiceChanges::Answer;
using Ending = ScriptedServer::Ending;

class SyncCollectionTest : public ChangeSourceTest {
protected:
    ServiceChanges Asked(const Steps& steps, const QString& state = QStringLiteral("urn:t:1")) {
        return ChangesSince(state, steps);
    }

    std::optional<QString> StateNow(const Steps& steps) {
        return AnswerTo([](ServiceConnection&, IChangeSource& source) { return source.StateNow(); }, steps);
    }
};

TEST_F(SyncCollectionTest, OneRequestTellsWhatIsThereAndWhatIsGone) {
    const ServiceChanges changes = Asked({AnswerOf("reports/changes-207")}, QStringLiteral("urn:<&>"));
    ASSERT_EQ(changes.answer, Answer::Known);
    ASSERT_EQ(changes.folders.size(), 1);
    EXPECT_EQ(changes.folders[0].serverPath, QStringLiteral("Projects/A/B"));
    EXPECT_EQ(changes.folders[0].getServerFolderId(), QStringLiteral("i-3"));
    ASSERT_EQ(changes.files.size(), 1);
    EXPECT_EQ(changes.files[0].serverPath, QStringLiteral("Projects/A/B/one file.txt"));
    EXPECT_EQ(changes.files[0].versionId, QStringLiteral("i-7-2"));
    EXPECT_EQ(changes.files[0].size, 5);
    EXPECT_EQ(changes.gone, QStringList({QStringLiteral("Projects/A/C c"), QStringLiteral("Projects/A/gone.txt")}));
    EXPECT_EQ(changes.state, QStringLiteral("urn:t:2"));
    EXPECT_EQ(changes.at, QDateTime(QDate(2026, 11, 20), QTime(10, 15, 31), Qt::UTC));
    EXPECT_EQ(requests[0].method, QByteArray("REPORT"));
    EXPECT_EQ(requests[0].target, QByteArray("/Projects/A/"));
    EXPECT_EQ(requests[0].headers.value("depth"), QByteArray("0"));
    EXPECT_THAT(requests[0].body.toStdString(), HasSubstr("<D:sync-token>urn:&lt;&amp;&gt;</D:sync-token>"));
    EXPECT_THAT(requests[0].body.toStdString(), HasSubstr("<D:sync-level>infinite</D:sync-level>"));
}

TEST_F(SyncCollectionTest, NothingIsAnAnswer) {
    for (const char* name : {"reports/nothing-207", "reports/itself-207"}) {
        const ServiceChanges changes = Asked({AnswerOf(name)});
        EXPECT_EQ(changes.answer, Answer::Known) << name;
        EXPECT_TRUE(changes.files.isEmpty() && changes.gone.isEmpty()) << name;
        EXPECT_EQ(changes.state, QStringLiteral("urn:t:2"));
    }
}

TEST_F(SyncCollectionTest, NoChangeIsBelievedOfAnAnswerThatIsNone) {
    for (const char* name :
         {"reports/no-token-207", "reports/empty-token-207", "reports/other-host-207", "reports/outside-207",
          "reports/gone-outside-207", "reports/gone-itself-207", "reports/gone-and-there-207", "reports/gone-twice-207",
          "reports/truncated-207", "reports/not-traversed-207", "reports/without-end-207",
          "reports/shorter-than-announced-207", "reports/page-207", "reports/page-200", "reports/not-supported-403",
          "reports/only-level-1-403", "reports/not-implemented-501", "statuses/bad-request-400"}) {
        const ServiceChanges changes = Asked({AnswerOf(name, Ending::Close)});
        EXPECT_EQ(changes.answer, Answer::NotAble) << name;
        EXPECT_TRUE(changes.files.isEmpty() && changes.folders.isEmpty() && changes.gone.isEmpty()) << name;
        EXPECT_EQ(changes.state, QString()) << name;
    }
}

TEST_F(SyncCollectionTest, ATokenThatTheServerForgotIsNoReasonNotToAskAgain) {
    for (const char* name : {"reports/unknown-token-403", "reports/too-many-507", "statuses/broken-500",
                             "statuses/not-found-404", "statuses/locked-423"}) {
        EXPECT_EQ(Asked({AnswerOf(name)}).answer, Answer::Forgotten) << name;
    }
}

TEST_F(SyncCollectionTest, NoAnswerAtAllIsAnError) {
    ScriptedServer server({});
    const QUrl url = server.Url(QString());
    server.Stop();
    ServiceConnection connection(url);
    const auto source = connection.NewChangeSource(folder);
    EXPECT_THROW(source->StateNow(), wire::TransactionError);
    source->Ask(QStringLiteral("urn:t:1"));
    EXPECT_THROW(source->Take(), wire::TransactionError);
}

TEST_F(SyncCollectionTest, TheServiceGivesItsStateBeforeItIsListed) {
    EXPECT_EQ(StateNow({AnswerOf("reports/token-207"), OptionsStep()}), QStringLiteral("urn:t:1"));
    EXPECT_EQ(requests[0].headers.value("depth"), QByteArray("0"));
}

TEST_F(SyncCollectionTest, AServerThatDoesNotSayThatItCanIsNotAbleTo) {
    for (const char* name : {"reports/token-unable-207", "reports/token-broken-207", "reports/page-207",
                             "reports/page-200", "statuses/bad-request-400"}) {
        EXPECT_EQ(StateNow({AnswerOf(name)}), QString()) << name;
    }
}

TEST_F(SyncCollectionTest, OfAFolderThatIsNotThereNothingIsSaid) {
    EXPECT_FALSE(StateNow({AnswerOf("statuses/not-found-404")}));
}

TEST_F(SyncCollectionTest, AnotherServerIsBelievedOnlyOnceItWentBelowTheFirstLevel) {
    const auto foreign = [](const char* report) {
        return QList<ScriptedServer::Step>(
            {AnswerOf("reports/token-207"), AnswerOf("statuses/options-foreign-200"), AnswerOf(report)});
    };
    EXPECT_EQ(StateNow(foreign("reports/changes-207")), QStringLiteral("urn:t:2"));
    EXPECT_THAT(requests[2].body.toStdString(), HasSubstr("<D:sync-token></D:sync-token>"));
    EXPECT_EQ(StateNow(foreign("reports/flat-207")), QString());
    EXPECT_EQ(StateNow(foreign("reports/only-level-1-403")), QString());
}

TEST_F(SyncCollectionTest, WhatIsOpenIsLookedAtByItsPath) {
    ScriptedServer server(
        {AnswerOf("folders/found-file-207"), AnswerOf("statuses/not-found-404"), AnswerOf("statuses/broken-500")});
    ServiceConnection connection(server.Url(QString()));
    const auto source = connection.NewChangeSource(folder);
    const ServiceChanges looked = source->LookAt({QStringLiteral("Projects/A"), QStringLiteral("Projects/A/gone")});
    EXPECT_EQ(looked.files.size(), 1);
    EXPECT_EQ(looked.gone, QStringList(QStringLiteral("Projects/A/gone")));
    EXPECT_THROW(source->LookAt({QStringLiteral("Projects/A/broken")}), ::sync::http::HttpException);
    server.Stop();
}

}  // namespace
}  // namespace changes
}  // namespace ovsync
