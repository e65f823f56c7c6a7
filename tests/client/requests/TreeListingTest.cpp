#include "client/requests/TreeListing.h"

#include <gmock/gmock.h>

#include <string>

#include "client/requests/AccountConnection.h"
#include "client/requests/HttpFactory.h"
#include "client/wire/TransactionError.h"
#include "host/http/HttpException.h"
#include "tests/client/Fixtures.h"
#include "tests/client/requests/BadAnswers.h"
#include "tests/client/requests/ScriptedAnswers.h"
#include "tests/fakes/CleanEnvironment.h"
#include "tests/fakes/ScriptedServer.h"

namespace ovsync {
namespace requests {

using wire::ConnectionSettings;
using wire::TransactionError;
namespace {

using sync::http::DAVPropfindRequest;
using testing::AllOf;
using testing::AnyOf;
using testing::HasSubstr;
using tests::BadAnswer;
using tests::Describe;
using tests::FixtureAnswer;
using tests::FixtureNameOf;
using tests::Script;
using tests::ScriptedServer;
using tests::StepsOf;
using tests::With;

using Ending = ScriptedServer::Ending;

const char* const Foreign = "statuses/options-foreign-200";
const char* const NoTrees = "statuses/no-trees-apache-403";

const Script RefusingTrees{{" /Projects/A/", {Foreign}},
                           {"infinity /Projects/A/", {NoTrees}},
                           {"1 /Projects/A/", {"trees/first-level-207"}},
                           {"1 /Projects/A/B/", {"trees/b-207"}},
                           {"1 /Projects/A/B/D%20d/", {"trees/d-207"}},
                           {"1 /Projects/A/C/", {"trees/c-207"}}};

class TreeListingTest : public testing::Test {
protected:
    std::shared_ptr<DAVPropfindRequest> TreeRequest(const ScriptedServer& server, const char* path = "/Projects/A/") {
        return HttpFactory().CreatePropfindRequest(std::make_shared<QUrl>(server.Url(QLatin1String(path))), 0,
                                                   DAVPropfindRequest::Tree);
    }

    void Execute(const std::shared_ptr<DAVPropfindRequest>& request) {
        connection.Execute({request}, [](const IRequestSender::Request& /*request*/, int /*state*/) {});
    }

    /// Lists the tree from a server that keeps to `script` to the end.
    std::shared_ptr<DAVPropfindRequest> Listed(const Script& script) {
        ScriptedServer server(StepsOf(script));
        auto request = TreeRequest(server);
        Execute(request);
        server.Stop();
        EXPECT_TRUE(server.SawItsScript());
        sent = server.Requests();
        return request;
    }

    std::string ErrorOf(const Script& script) {
        ScriptedServer server(StepsOf(script));
        const auto request = TreeRequest(server);
        try {
            Execute(request);
        } catch (const sync::core::SyncException& error) {
            EXPECT_FALSE(request->GetResult());
            EXPECT_EQ(request->GetStatusCode(), 0);
            return error.Utf8Message();
        }
        return "";
    }

    static QStringList Whole() {
        listing::MultistatusReader reader(QUrl(QStringLiteral("http://127.0.0.1/Projects/A/")),
                                          DAVPropfindRequest::Tree);
        const QByteArray body = FixtureAnswer(QStringLiteral("trees/whole-207")).body;
        reader.Feed(body.constData(), static_cast<size_t>(body.size()));
        const auto result = reader.Finish();
        result->serverTime = QDateTime(QDate(2026, 11, 20), QTime(10, 15, 31), Qt::UTC);
        return Describe(*result);
    }

    const tests::CleanEnvironment environment;
    ConnectionSettings settings;
    AccountConnection connection{settings, QAuthenticator()};
    QList<ScriptedServer::Request> sent;
};

TEST_F(TreeListingTest, AServerThatRefusesTreesIsListedFolderByFolderAsIfItHadAnswered) {
    const auto request = Listed(RefusingTrees);
    EXPECT_EQ(request->GetStatusCode(), 207);
    EXPECT_EQ(Describe(*request->GetResult()), Whole());
    EXPECT_EQ(request->GetUrl().path(), QStringLiteral("/Projects/A/"));
}

TEST_F(TreeListingTest, EveryRefusalThatCanMeanTheDepthIsTaken) {
    for (const char* refusal : {"statuses/no-trees-condition-403", "statuses/bad-request-400", "folders/status-412"}) {
        AccountConnection another(settings, QAuthenticator());
        ScriptedServer server(StepsOf(With(RefusingTrees, {{"infinity /Projects/A/", {refusal}}})));
        const auto request = TreeRequest(server);
        another.Execute({request}, [](const IRequestSender::Request& /*request*/, int /*state*/) {});
        EXPECT_EQ(Describe(*request->GetResult()), Whole()) << refusal;
    }
}

TEST_F(TreeListingTest, ARefusalIsRemembered) {
    Script twice = RefusingTrees;
    for (QList<const char*>& fixtures : twice) {
        fixtures += fixtures;
    }
    twice[" /Projects/A/"] = {Foreign};
    twice["infinity /Projects/A/"] = {NoTrees};
    ScriptedServer server(StepsOf(twice));
    for (int i = 0; i < 2; ++i) {
        const auto request = TreeRequest(server);
        Execute(request);
        EXPECT_EQ(Describe(*request->GetResult()), Whole());
    }
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(TreeListingTest, ARefusalOfTheFolderItselfIsTheLibrarysToJudge) {
    const auto request = Listed({{" /Projects/A/", {Foreign}},
                                 {"infinity /Projects/A/", {"statuses/forbidden-403"}},
                                 {"1 /Projects/A/", {"statuses/forbidden-403"}}});
    EXPECT_EQ(request->GetStatusCode(), 403);
    EXPECT_FALSE(request->GetResult());
}

TEST_F(TreeListingTest, AFolderThatIsNotThereIsNotAskedForAgain) {
    const auto request = Listed({{" /Projects/A/", {Foreign}}, {"infinity /Projects/A/", {"statuses/not-found-404"}}});
    EXPECT_EQ(request->GetStatusCode(), 404);
}

TEST_F(TreeListingTest, WhatAServerLeavesOutWithoutAWordIsAskedFor) {
    Script script = RefusingTrees;
    script.remove("1 /Projects/A/");
    script["infinity /Projects/A/"] = {"trees/first-level-207"};
    EXPECT_EQ(Describe(*Listed(script)->GetResult()), Whole());
    script["infinity /Projects/A/"] = {"trees/two-levels-207"};
    script.remove("1 /Projects/A/B/");
    script.remove("1 /Projects/A/C/");
    AccountConnection another(settings, QAuthenticator());
    ScriptedServer server(StepsOf(script));
    const auto request = TreeRequest(server);
    another.Execute({request}, [](const IRequestSender::Request& /*request*/, int /*state*/) {});
    EXPECT_EQ(Describe(*request->GetResult()), Whole());
}

TEST_F(TreeListingTest, ATreeWithoutFoldersOnItsLowestLevelIsWhole) {
    EXPECT_EQ(
        Describe(*Listed({{" /Projects/A/", {Foreign}}, {"infinity /Projects/A/", {"trees/whole-207"}}})->GetResult()),
        Whole());
}

TEST_F(TreeListingTest, ATreeWithFewerLevelsThanTheServerWasSeenToListIsWhole) {
    ScriptedServer server(StepsOf(
        {{" /Projects/A/", {Foreign}}, {"infinity /Projects/A/", {"trees/whole-207", "trees/empty-folders-207"}}}));
    Execute(TreeRequest(server));
    const auto request = TreeRequest(server);
    Execute(request);
    EXPECT_EQ(request->GetResult()->collectionResponses.size(), 2);
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(TreeListingTest, TheServiceIsNotDoubted) {
    const auto request = Listed(
        {{" /Projects/A/", {"statuses/options-service-200"}}, {"infinity /Projects/A/", {"trees/empty-folders-207"}}});
    EXPECT_EQ(request->GetResult()->collectionResponses.size(), 2);
}

TEST_F(TreeListingTest, EveryFolderIsAskedForInTheWordsOfTheTreeAndWithoutItsCondition) {
    ScriptedServer server(StepsOf(RefusingTrees));
    const auto request = TreeRequest(server);
    request->SetProperties({QStringLiteral("{DAV:}P:getcontentlength")});
    request->SetModifiedSinceTime(QDateTime(QDate(2026, 11, 20), QTime(10, 15, 30), Qt::UTC));
    Execute(request);
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    for (const ScriptedServer::Request& each : server.Requests().mid(1)) {
        EXPECT_THAT(each.body.toStdString(), HasSubstr("<D:prop><D:resourcetype/><P:getcontentlength/></D:prop>"));
        EXPECT_EQ(each.headers.contains("if-modified-since"), each.headers.value("depth") == "infinity");
    }
}

TEST_F(TreeListingTest, AFolderThatWentMeanwhileIsLeftOutWithWhatLayInIt) {
    Script script = With(RefusingTrees, {{"1 /Projects/A/B/D%20d/", {"statuses/not-found-404"}},
                                         {"1 /Projects/A/B/", {"trees/b-207", "trees/b-without-d-207"}}});
    const QString files = QStringLiteral("Projects/A/B/b.txt Projects/A/a.txt");
    const auto keysOf = [](const std::shared_ptr<DAVPropfindRequest>& request) {
        return QStringList(request->GetResult()->fileResponses.keys()).join(QLatin1Char(' '));
    };
    auto request = Listed(script);
    EXPECT_EQ(keysOf(request), files);
    EXPECT_EQ(request->GetResult()->collectionResponses.keys(),
              (QStringList{QStringLiteral("Projects/A/B"), QStringLiteral("Projects/A/C")}));

    // And so is the folder above, when that went too.
    script["infinity /Projects/A/"].clear();
    script["1 /Projects/A/"] = {"trees/first-level-207", "trees/without-b-207"};
    script["1 /Projects/A/B/"] = {"trees/b-207", "statuses/not-found-404"};
    ScriptedServer server(StepsOf(With(script, {{"infinity /Projects/A/", {NoTrees}}})));
    request = TreeRequest(server);
    AccountConnection another(settings, QAuthenticator());
    another.Execute({request}, [](const IRequestSender::Request& /*request*/, int /*state*/) {});
    EXPECT_EQ(keysOf(request), QStringLiteral("Projects/A/a.txt"));
    EXPECT_EQ(request->GetResult()->collectionResponses.keys(), QStringList{QStringLiteral("Projects/A/C")});
}

TEST_F(TreeListingTest, AFolderThatIsListedButNotThereEndsTheWhole) {
    EXPECT_THAT(ErrorOf(With(RefusingTrees, {{"1 /Projects/A/C/", {"statuses/not-found-404"}},
                                             {"1 /Projects/A/", {"trees/first-level-207", "trees/first-level-207"}}})),
                AllOf(HasSubstr("/Projects/A/C/ failed: the server says that this folder is not there"),
                      HasSubstr("lists it in the one above")));
}

TEST_F(TreeListingTest, AFolderThatBecameAFileIsOne) {
    for (const Script& change : {Script{{"1 /Projects/A/B/", {"trees/b-as-file-207"}}},
                                 Script{{"1 /Projects/A/B/", {"statuses/not-found-404"}},
                                        {"1 /Projects/A/", {"trees/first-level-207", "trees/with-b-as-file-207"}}}}) {
        Script script = With(RefusingTrees, change);
        script.remove("1 /Projects/A/B/D%20d/");
        AccountConnection another(settings, QAuthenticator());
        ScriptedServer server(StepsOf(script));
        const auto request = TreeRequest(server);
        another.Execute({request}, [](const IRequestSender::Request& /*request*/, int /*state*/) {});
        EXPECT_EQ(request->GetResult()->collectionResponses.keys(), QStringList{QStringLiteral("Projects/A/C")});
        EXPECT_EQ(request->GetResult()->fileResponses.value(QStringLiteral("Projects/A/B")).contentLength, 4);
        EXPECT_FALSE(request->GetResult()->isSingleResponse);
    }
}

TEST_F(TreeListingTest, ARefusedFolderEndsTheWholeAndIsNamed) {
    ScriptedServer server(StepsOf(With(RefusingTrees, {{"1 /Projects/A/B/D%20d/", {"statuses/forbidden-403"}}})));
    const auto request = TreeRequest(server);
    try {
        Execute(request);
        FAIL();
    } catch (const sync::http::HttpException& error) {
        EXPECT_EQ(error.StatusCode(), 403);
        EXPECT_THAT(error.Utf8Message(), AllOf(HasSubstr("/Projects/A/B/D%20d/"), HasSubstr("cannot be listed"),
                                               HasSubstr("the body begins: Because")));
    }
    EXPECT_FALSE(request->GetResult());
}

TEST_F(TreeListingTest, LimitsCountForTheWhole) {
    settings.listing.entries = {7, QStringLiteral("--entries")};
    int size = 0;
    for (const char* fixture : {"trees/first-level-207", "trees/b-207", "trees/d-207", "trees/c-207"}) {
        size += FixtureAnswer(QLatin1String(fixture)).body.size();
    }
    settings.listing.bytes = {size, QStringLiteral("--bytes")};
    const auto errorWith = [this](const ConnectionSettings& limited) {
        AccountConnection another(limited, QAuthenticator());
        ScriptedServer server(StepsOf(RefusingTrees));
        try {
            another.Execute({TreeRequest(server)}, [](const IRequestSender::Request& /*request*/, int /*state*/) {});
        } catch (const TransactionError& error) {
            return error.Utf8Message();
        }
        return std::string();
    };
    EXPECT_EQ(errorWith(settings), "");
    settings.listing.entries.value = 6;
    EXPECT_THAT(errorWith(settings), HasSubstr("more than 6 entries, the limit set by --entries"));
    settings.listing.entries.value = 7;
    settings.listing.bytes.value = size - 1;
    EXPECT_THAT(errorWith(settings),
                HasSubstr("more than " + std::to_string(size - 1) + " bytes, the limit set by --bytes"));
}

TEST_F(TreeListingTest, TheSilenceOfOneFolderEndsTheWhole) {
    settings.silenceLimit = std::chrono::milliseconds(300);
    QList<ScriptedServer::Step> steps = StepsOf(RefusingTrees);
    steps[4].ending = Ending::Stall;
    const auto answer = steps[4].answer;
    steps[4].answer = [answer](const ScriptedServer::Request& request) { return answer(request).chopped(20); };
    ScriptedServer server(steps);
    AccountConnection another(settings, QAuthenticator());
    const auto request = TreeRequest(server);
    try {
        another.Execute({request}, [](const IRequestSender::Request& /*request*/, int /*state*/) {});
        FAIL();
    } catch (const TransactionError& error) {
        EXPECT_THAT(error.Utf8Message(), HasSubstr("nothing was received or sent for 0.3 s"));
    }
    EXPECT_FALSE(request->GetResult());
}

TEST_F(TreeListingTest, ACancelledWalkEndsAtOnce) {
    AccountConnection another(settings, QAuthenticator());
    QList<ScriptedServer::Step> steps = StepsOf(RefusingTrees);
    const auto answer = steps[4].answer;
    steps[4].answer = [answer, &another](const ScriptedServer::Request& request) {
        another.Cancel();
        return answer(request).left(20);
    };
    steps[4].ending = Ending::Stall;
    ScriptedServer server(steps);
    try {
        another.Execute({TreeRequest(server)}, [](const IRequestSender::Request& /*request*/, int /*state*/) {});
        FAIL();
    } catch (const TransactionError& error) {
        EXPECT_THAT(error.Utf8Message(), HasSubstr("it was cancelled"));
    }
}

/// What is no answer to a listing is none for a folder of a tree.
class BadFolderOfTreeTest : public TreeListingTest, public testing::WithParamInterface<BadAnswer> {};

TEST_P(BadFolderOfTreeTest, EndsTheWholeInAnErrorThatNamesTheFolder) {
    const BadAnswer& bad = GetParam();
    const QByteArray answer = FixtureAnswer(FixtureNameOf(bad), bad.fillSize).Bytes();
    ScriptedServer server(
        {ScriptedServer::Answer(FixtureAnswer(QLatin1String(Foreign)).Bytes(), Ending::Close),
         ScriptedServer::Answer(FixtureAnswer(QLatin1String(NoTrees)).Bytes(), Ending::Close),
         ScriptedServer::Answer(FixtureAnswer(QStringLiteral("trees/projects-207")).Bytes(), Ending::Close),
         ScriptedServer::Answer(answer, bad.ending)});
    const auto request = TreeRequest(server, "/Projects/");
    try {
        Execute(request);
        FAIL();
    } catch (const TransactionError& error) {
        // What is asked at the same time is unread when the server closes, which may reach this side as a reset.
        EXPECT_THAT(error.Utf8Message(), AllOf(HasSubstr("/Projects/A/ failed: "),
                                               AnyOf(HasSubstr(bad.reason), HasSubstr("Connection reset by peer"))));
    }
    EXPECT_FALSE(request->GetResult());
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

std::vector<BadAnswer> AnswersForFolders() {
    std::vector<BadAnswer> answers;
    for (const BadAnswer& answer : tests::BadAnswers()) {
        if (answer.depth > 0) {
            answers.push_back(answer);
        }
    }
    return answers;
}

INSTANTIATE_TEST_SUITE_P(Answers, BadFolderOfTreeTest, testing::ValuesIn(AnswersForFolders()),
                         [](const testing::TestParamInfo<BadAnswer>& tested) { return tests::NameOf(tested.param); });

}  // namespace
}  // namespace requests
}  // namespace ovsync
