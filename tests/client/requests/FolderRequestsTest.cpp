#include <gmock/gmock.h>

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "client/library/RequestAuthenticatorFactory.h"
#include "client/requests/HttpFactory.h"
#include "client/requests/WholeAnswerRequest.h"
#include "client/wire/TransactionError.h"
#include "tests/client/Fixtures.h"
#include "tests/client/requests/ScriptedAnswers.h"
#include "tests/fakes/CleanEnvironment.h"
#include "tests/fakes/ScriptedServer.h"

namespace ovsync {
namespace requests {

using library::RequestAuthenticatorFactory;
using wire::TransactionError;
namespace {

using sync::config::FolderConfiguration;
using sync::interf::IHttpRequest;
using sync::interf::IRequestExecutor;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using tests::AnswerOf;
using tests::CleanEnvironment;
using tests::FixtureAnswer;
using tests::RawAnswer;
using tests::ScriptedServer;

using Ending = ScriptedServer::Ending;
using Headers = QList<QPair<QByteArray, QByteArray>>;

const QString FolderPath = QStringLiteral("/Projects/A/");
const int ServerId = 3;

/// The requests of the section on folders.
enum class Kind { Query, QueryById, Creation, Deletion, File, Move };

const char* MethodOf(Kind kind) {
    switch (kind) {
        case Kind::Query:
        case Kind::QueryById:
            return "PROPFIND";
        case Kind::Creation:
            return "MKCOL";
        case Kind::Deletion:
            return "DELETE";
        case Kind::File:
            return "HEAD";
        case Kind::Move:
            return "MOVE";
    }
    return "";
}

class FolderRequestsTest : public testing::Test {
protected:
    std::shared_ptr<IHttpRequest> RequestOf(Kind kind, const QUrl& url) {
        const auto asked = std::make_shared<QUrl>(url);
        FolderConfiguration folder;
        switch (kind) {
            case Kind::Query:
                return factory.CreateFolderRequest(HttpFactory::FolderQuery, asked, folder);
            case Kind::QueryById:
                folder.setServerFolderId(QStringLiteral("item-4"));
                return factory.CreateFolderRequest(HttpFactory::FolderQuery, asked, folder);
            case Kind::Creation:
                return factory.CreateFolderRequest(HttpFactory::FolderCreation, asked, folder);
            case Kind::Deletion:
                return factory.CreateFolderRequest(HttpFactory::FolderDeletion, asked, folder);
            case Kind::File:
                return factory.CreateFileRequest(asked, ServerId, 0);
            default:
                return factory.CreateMoveRequest(
                    asked, std::make_shared<QUrl>(url.resolved(QUrl(QStringLiteral("/B%20%C3%A9")))), ServerId);
        }
    }

    /// Over an executor of its own, as the library does it. "" when nothing was thrown.
    std::string ErrorOfExecuting(const std::shared_ptr<IHttpRequest>& request) {
        const std::shared_ptr<IRequestExecutor> executor = factory.CreateRequestExecutor(ServerId, authenticators);
        QObject::connect(executor.get(), &IRequestExecutor::RequestCompleted,
                         [this](const std::shared_ptr<IHttpRequest>& of, IHttpRequest::RequestState state) {
                             completed.push_back(of);
                             states.push_back(state);
                         });
        try {
            executor->Execute({request});
        } catch (const TransactionError& failure) {
            return failure.Utf8Message();
        }
        return "";
    }

    /// What became of a request that got the answer in `fixture`. The body of an answer to HEAD stays away.
    std::shared_ptr<IHttpRequest> Answered(Kind kind, const QString& fixture) {
        const RawAnswer answer = FixtureAnswer(fixture);
        ScriptedServer server({ScriptedServer::Answer(kind == Kind::File ? answer.head : answer.Bytes())});
        std::shared_ptr<IHttpRequest> request = RequestOf(kind, server.Url(FolderPath));
        error = ErrorOfExecuting(request);
        server.Stop();
        EXPECT_TRUE(server.SawItsScript());
        if (!server.Requests().isEmpty()) {
            sent = server.Requests().first();
        }
        return request;
    }

    const CleanEnvironment environment;
    const std::shared_ptr<RequestAuthenticatorFactory> authenticators =
        std::make_shared<RequestAuthenticatorFactory>(QStringLiteral("alice"), QStringLiteral("open sesame"));
    HttpFactory factory;
    std::string error;
    ScriptedServer::Request sent;
    std::vector<std::shared_ptr<IHttpRequest>> completed;
    std::vector<IHttpRequest::RequestState> states;
};

TEST_F(FolderRequestsTest, AFolderIsAskedForAloneAndByTheServicesProtocol) {
    const auto request = Answered(Kind::Query, QStringLiteral("folders/found-207"));
    EXPECT_EQ(error, "");
    EXPECT_EQ(sent.method, "PROPFIND");
    EXPECT_EQ(sent.target, "/Projects/A/");
    EXPECT_EQ(sent.headers.value("depth"), "0");
    EXPECT_EQ(sent.headers.value("x-ovs-version"), "1");
    EXPECT_TRUE(
        sent.body.contains("<D:prop><D:resourcetype/><P:getcontentlength/><D:getlastmodified/>"
                           "<D:creationdate/><P:resourceclasstype/><P:syncproperties/></D:prop>"));
    EXPECT_EQ(request->GetStatusCode(), 207);
    EXPECT_EQ(request->GetUrl().path(), FolderPath);
}

TEST_F(FolderRequestsTest, TheHeadersOfAnAnswerAreGivenAsTheyCame) {
    const auto request = Answered(Kind::Query, QStringLiteral("folders/found-207"));
    EXPECT_EQ(request->GetResponseHeaders().mid(1, 2), (Headers{{"x-ovs-id", "item-4"}, {"X-Ovs-OwnerId", "alice"}}));
    EXPECT_EQ(request->GetResponseHeaders().size(), 4);

    const auto refused = Answered(Kind::Creation, QStringLiteral("folders/exists-400"));
    EXPECT_EQ(refused->GetResponseHeaders().mid(1, 3),
              (Headers{{"X-OVS-Reason-Phrase", "Existing file: already exists."},
                       {"x-ovs-reason-phrase", "and more"},
                       {"Set-Cookie", "a"}}));
    EXPECT_EQ(refused->GetResponseBody(), "Because of this and that.\n");
}

TEST_F(FolderRequestsTest, IdAndOwnerThatTheHeadersLackComeFromTheEntry) {
    const auto request = Answered(Kind::Query, QStringLiteral("folders/found-without-headers-207"));
    EXPECT_EQ(request->GetResponseHeaders().mid(2), (Headers{{"x-ovs-id", "item-5"}, {"x-ovs-ownerid", "zo\xC3\xA9"}}));
}

TEST_F(FolderRequestsTest, AFolderWithoutAnIdGetsOneMadeOfItsPath) {
    const auto request = Answered(Kind::QueryById, QStringLiteral("folders/found-elsewhere-207"));
    EXPECT_EQ(error, "");
    EXPECT_EQ(request->GetResponseHeaders().mid(2), (Headers{{"x-ovs-id", "path:Moved/B"}}));
}

TEST_F(FolderRequestsTest, AFileInThePlaceOfTheFolderIsNoFolder) {
    const auto request = Answered(Kind::Query, QStringLiteral("folders/found-file-207"));
    EXPECT_EQ(error, "");
    EXPECT_EQ(request->GetStatusCode(), 404);
    EXPECT_EQ(request->GetResponseHeaders().size(), 3);
}

TEST_F(FolderRequestsTest, OnlyAFolderThatIsAskedForByItsIdMayBeAnywhere) {
    Answered(Kind::Query, QStringLiteral("folders/found-elsewhere-207"));
    EXPECT_THAT(error, HasSubstr("/Moved/B/ lies outside what was asked"));
    Answered(Kind::QueryById, QStringLiteral("folders/two-found-207"));
    EXPECT_THAT(error, HasSubstr("/Projects/B/ lies outside what was asked"));
}

TEST_F(FolderRequestsTest, AFolderThatIsAskedForByItsIdIsNamedByItsEntry) {
    Answered(Kind::QueryById, QStringLiteral("folders/found-without-href-207"));
    EXPECT_THAT(error, HasSubstr("an entry has an empty path"));
}

TEST_F(FolderRequestsTest, AnIdThatWasMadeUpNamesAPath) {
    ScriptedServer server({AnswerOf("folders/found-elsewhere-207")});
    FolderConfiguration folder;
    folder.setServerFolderId(QStringLiteral("path:Projects/A"));
    EXPECT_THAT(ErrorOfExecuting(factory.CreateFolderRequest(HttpFactory::FolderQuery,
                                                             std::make_shared<QUrl>(server.Url(FolderPath)), folder)),
                HasSubstr("lies outside"));
}

TEST_F(FolderRequestsTest, AFolderIsCreatedByARequestWithoutABody) {
    const auto request = Answered(Kind::Creation, QStringLiteral("folders/created-201"));
    EXPECT_EQ(error, "");
    EXPECT_EQ(sent.method, "MKCOL");
    EXPECT_EQ(sent.target, "/Projects/A/");
    EXPECT_EQ(sent.headers.value("x-ovs-version"), "1");
    EXPECT_EQ(sent.body, "");
    EXPECT_FALSE(sent.headers.contains("content-type"));
    EXPECT_EQ(request->GetStatusCode(), 201);
    EXPECT_EQ(request->GetResponseBody(), FixtureAnswer(QStringLiteral("folders/created-201")).body);
}

TEST_F(FolderRequestsTest, WhatAnotherServerCreatesHasTheBodyOfTheService) {
    for (const char* fixture : {"folders/created-by-another-201", "folders/created-nothing-201"}) {
        const RawAnswer answer = FixtureAnswer(QLatin1String(fixture));
        ScriptedServer server({ScriptedServer::Answer(answer.Bytes())});
        const auto request = RequestOf(Kind::Creation, server.Url(QStringLiteral("/A&B/100%25%20%C3%A9")));
        EXPECT_EQ(ErrorOfExecuting(request), "");
        EXPECT_EQ(request->GetStatusCode(), 201);
        EXPECT_EQ(request->GetResponseBody(),
                  "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                  "<Response><Folders><Folder><id>path:A&amp;B/100%25 \xC3\xA9</id></Folder></Folders></Response>");
    }
}

TEST_F(FolderRequestsTest, AnIncompleteDescriptionOfANewFolderIsNoAnswer) {
    Answered(Kind::Creation, QStringLiteral("folders/created-broken-201"));
    EXPECT_THAT(error, AllOf(HasSubstr("describes the new folder is broken at line 3"), HasSubstr("status 201")));
    for (const char* fixture : {"folders/created-empty-201", "folders/created-without-id-201"}) {
        Answered(Kind::Creation, QLatin1String(fixture));
        EXPECT_THAT(error, AllOf(HasSubstr("MKCOL"), HasSubstr("/Projects/A/ failed: "), HasSubstr("status 201")))
            << fixture;
    }
}

TEST_F(FolderRequestsTest, AnAnswerThatIsCutOffIsNone) {
    ScriptedServer server({AnswerOf("folders/created-cut-201", Ending::Close)});
    EXPECT_THAT(ErrorOfExecuting(RequestOf(Kind::Creation, server.Url(FolderPath))), HasSubstr("cut off or damaged"));
    EXPECT_THAT(states, ElementsAre(IHttpRequest::StateFailed));
}

TEST_F(FolderRequestsTest, ABodyThatIsTooLargeIsNoAnswer) {
    const int frameSize = static_cast<int>(qstrlen("<Response></Response>\n"));
    const int fits = WholeAnswerRequest::BodyLimit - frameSize;
    for (const int fillSize : {fits, fits + 1}) {
        ScriptedServer server(
            {ScriptedServer::Answer(FixtureAnswer(QStringLiteral("folders/created-too-large-201"), fillSize).Bytes())});
        EXPECT_THAT(ErrorOfExecuting(RequestOf(Kind::Creation, server.Url(FolderPath))),
                    HasSubstr(fillSize == fits ? "does not say which id" : "above 1048576 bytes"));
    }
}

TEST_F(FolderRequestsTest, AFolderThatAnotherServerHasAlreadyIsThereAsTheServiceSaysIt) {
    ScriptedServer server({AnswerOf("folders/status-405"), AnswerOf("folders/found-without-headers-207")});
    const auto request = RequestOf(Kind::Creation, server.Url(FolderPath));
    EXPECT_EQ(ErrorOfExecuting(request), "");
    EXPECT_EQ(request->GetStatusCode(), 400);
    EXPECT_EQ(request->GetResponseHeaders(), (Headers{{"x-ovs-reason-phrase", "existing file already exists"}}));
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    EXPECT_EQ(server.Requests().last().method, "PROPFIND");
    EXPECT_EQ(server.Requests().last().headers.value("depth"), "0");
}

TEST_F(FolderRequestsTest, WhereNoFolderIsA405SaysThatNoneCanBeMade) {
    for (const char* fixture : {"folders/found-file-207", "statuses/not-found-404"}) {
        ScriptedServer server({AnswerOf("folders/status-405"), AnswerOf(fixture)});
        const auto request = RequestOf(Kind::Creation, server.Url(FolderPath));
        EXPECT_EQ(ErrorOfExecuting(request), "");
        EXPECT_EQ(request->GetStatusCode(), 405);
    }
}

TEST_F(FolderRequestsTest, AFolderInThePlaceOfTheFileIsAskedForWithASlash) {
    ScriptedServer server({ScriptedServer::Answer(FixtureAnswer(QStringLiteral("statuses/slash-missing-301")).head),
                           ScriptedServer::Answer(FixtureAnswer(QStringLiteral("folders/status-200")).head)});
    const auto request = RequestOf(Kind::File, server.Url(QStringLiteral("/Projects/A%20b")));
    EXPECT_EQ(ErrorOfExecuting(request), "");
    EXPECT_EQ(request->GetStatusCode(), 200);
    EXPECT_EQ(request->GetUrl().path(), QStringLiteral("/Projects/A b"));
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    EXPECT_EQ(server.Requests().last().target, "/Projects/A%20b/");
}

TEST_F(FolderRequestsTest, AFolderIsDeleted) {
    const auto request = Answered(Kind::Deletion, QStringLiteral("folders/status-204"));
    EXPECT_EQ(error, "");
    EXPECT_EQ(sent.method, "DELETE");
    EXPECT_EQ(sent.target, "/Projects/A/");
    EXPECT_EQ(sent.headers.value("x-ovs-version"), "1");
    EXPECT_EQ(request->GetStatusCode(), 204);
}

TEST_F(FolderRequestsTest, AFileIsAskedForByItsHeadAlone) {
    const auto request = Answered(Kind::File, QStringLiteral("folders/status-200"));
    EXPECT_EQ(error, "");
    EXPECT_EQ(sent.method, "HEAD");
    EXPECT_EQ(sent.headers.value("x-ovs-version"), "1");
    EXPECT_EQ(request->GetStatusCode(), 200);
    EXPECT_EQ(request->GetResponseBody(), "");
}

TEST_F(FolderRequestsTest, AMoveNamesWhereToAndOverwritesNothing) {
    const auto request = Answered(Kind::Move, QStringLiteral("folders/status-201"));
    EXPECT_EQ(error, "");
    EXPECT_EQ(sent.method, "MOVE");
    EXPECT_EQ(sent.target, "/Projects/A/");
    EXPECT_EQ(sent.headers.value("x-ovs-version"), "1");
    EXPECT_EQ(sent.headers.value("overwrite"), "F");
    EXPECT_EQ(sent.headers.value("destination"),
              request->GetUrl().resolved(QUrl(QStringLiteral("/B%20%C3%A9/"))).toEncoded());
    EXPECT_EQ(request->GetStatusCode(), 201);
}

TEST_F(FolderRequestsTest, ExecutorsOfAnAccountShareItsConnection) {
    ScriptedServer server({AnswerOf("folders/found-207"), AnswerOf("folders/created-201"),
                           ScriptedServer::Answer(FixtureAnswer(QStringLiteral("folders/status-200")).head),
                           AnswerOf("folders/status-204"), AnswerOf("folders/status-201")});
    for (const Kind kind : {Kind::Query, Kind::Creation, Kind::File, Kind::Deletion, Kind::Move}) {
        EXPECT_EQ(ErrorOfExecuting(RequestOf(kind, server.Url(FolderPath))), "");
    }
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    EXPECT_EQ(server.Requests().last().connection, 1);
}

TEST_F(FolderRequestsTest, ExecutorsOfTwoAccountsDoNotShareCredentials) {
    const auto answer = [](const char* name) { return AnswerOf(name, Ending::Close); };
    ScriptedServer server({answer("statuses/unauthorized-basic-401"), answer("folders/status-204"),
                           answer("statuses/unauthorized-basic-401"), answer("folders/status-204")});
    const auto deletion = RequestOf(Kind::Deletion, server.Url(FolderPath));
    factory.CreateRequestExecutor(1, authenticators)->Execute({deletion});
    const auto others =
        std::make_shared<RequestAuthenticatorFactory>(QStringLiteral("bob"), QStringLiteral("different"));
    factory.CreateRequestExecutor(2, others)->Execute({deletion});
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    EXPECT_EQ(server.Requests().value(1).headers.value("authorization"),
              "Basic " + QByteArray("alice:open sesame").toBase64());
    EXPECT_EQ(server.Requests().value(3).headers.value("authorization"),
              "Basic " + QByteArray("bob:different").toBase64());
}

TEST_F(FolderRequestsTest, ARequestThatIsExecutedAgainForgetsItsFirstAnswer) {
    ScriptedServer server({AnswerOf("folders/created-201"), AnswerOf("folders/status-302")});
    const auto request = RequestOf(Kind::Creation, server.Url(FolderPath));
    EXPECT_EQ(ErrorOfExecuting(request), "");
    EXPECT_NE(ErrorOfExecuting(request), "");
    EXPECT_EQ(request->GetStatusCode(), 0);
    EXPECT_EQ(request->GetResponseBody(), "");
    EXPECT_TRUE(request->GetResponseHeaders().isEmpty());
    EXPECT_EQ(completed, (std::vector<std::shared_ptr<IHttpRequest>>{request, request}));
    EXPECT_THAT(states, ElementsAre(IHttpRequest::StateAnswered, IHttpRequest::StateFailed));
}

/// What one kind of request makes of one status.
struct StatusCase {
    Kind kind;
    const char* fixture;
    /// What the library is given; 0 when the answer is none.
    int given;
};

void PrintTo(const StatusCase& tested, std::ostream* stream) {
    *stream << MethodOf(tested.kind) << " " << tested.fixture;
}

class FolderStatusTest : public FolderRequestsTest, public testing::WithParamInterface<StatusCase> {};

TEST_P(FolderStatusTest, IsTakenAsTheProtocolSays) {
    const StatusCase& tested = GetParam();
    const auto request = Answered(tested.kind, QLatin1String(tested.fixture));
    EXPECT_EQ(request->GetStatusCode(), tested.given);
    if (tested.given == 0) {
        const QByteArray status = QByteArray(tested.fixture).right(3);
        EXPECT_THAT(error,
                    AllOf(HasSubstr(MethodOf(tested.kind)), HasSubstr("/Projects/A/ failed: "),
                          HasSubstr("is unexpected for this request"), HasSubstr("status " + status.toStdString())));
    } else {
        EXPECT_EQ(error, "");
    }
    EXPECT_EQ(completed, std::vector<std::shared_ptr<IHttpRequest>>{request});
    EXPECT_THAT(states, ElementsAre(tested.given == 0 ? IHttpRequest::StateFailed : IHttpRequest::StateAnswered));
}

std::vector<StatusCase> StatusCases() {
    std::vector<StatusCase> cases;
    for (const Kind kind : {Kind::Query, Kind::Creation, Kind::Deletion, Kind::File, Kind::Move}) {
        for (const char* failure : {"statuses/bad-request-400", "statuses/forbidden-403", "statuses/not-found-404",
                                    "folders/status-405", "folders/status-409", "folders/status-412",
                                    "statuses/locked-423", "statuses/broken-500", "folders/status-507"}) {
            // What a 405 means here has tests of its own.
            if (kind != Kind::Creation || qstrcmp(failure, "folders/status-405") != 0) {
                cases.push_back({kind, failure, QByteArray(failure).right(3).toInt()});
            }
        }
        for (const char* none : {"folders/status-203", "folders/status-206", "folders/status-300", "folders/status-301",
                                 "folders/status-302", "folders/status-303", "folders/status-304", "folders/status-307",
                                 "folders/status-308"}) {
            cases.push_back({kind, none, 0});
        }
    }
    const std::vector<StatusCase> particular = {
        {Kind::Creation, "folders/status-200", 0},   {Kind::Creation, "folders/status-201", 201},
        {Kind::Creation, "folders/status-202", 0},   {Kind::Creation, "folders/status-204", 0},
        {Kind::Creation, "folders/status-207", 424}, {Kind::Deletion, "folders/status-200", 200},
        {Kind::Deletion, "folders/status-201", 0},   {Kind::Deletion, "folders/status-202", 202},
        {Kind::Deletion, "folders/status-204", 204}, {Kind::Deletion, "folders/status-207", 424},
        {Kind::Move, "folders/status-200", 200},     {Kind::Move, "folders/status-201", 201},
        {Kind::Move, "folders/status-202", 0},       {Kind::Move, "folders/status-204", 204},
        {Kind::Move, "folders/status-207", 424},     {Kind::File, "folders/status-200", 200},
        {Kind::File, "folders/status-201", 0},       {Kind::File, "folders/status-204", 0},
        {Kind::File, "folders/status-207", 0},       {Kind::Query, "folders/status-200", 0},
        {Kind::Query, "folders/status-204", 0},
    };
    cases.insert(cases.end(), particular.begin(), particular.end());
    return cases;
}

INSTANTIATE_TEST_SUITE_P(Statuses, FolderStatusTest, testing::ValuesIn(StatusCases()),
                         [](const testing::TestParamInfo<StatusCase>& tested) {
                             std::string name = MethodOf(tested.param.kind);
                             return name + "_" + QByteArray(tested.param.fixture).right(3).toStdString();
                         });

/// How the transaction with any of the requests can break.
class BrokenExchangeTest : public FolderRequestsTest, public testing::WithParamInterface<Kind> {};

TEST_P(BrokenExchangeTest, IsAnErrorThatNamesTheUrl) {
    for (const char* fixture : {"bad/nothing", "bad/head-cut-off", "bad/no-http", "bad/two-sizes"}) {
        const RawAnswer answer = FixtureAnswer(QLatin1String(fixture));
        ScriptedServer server({ScriptedServer::Answer(answer.Bytes(), Ending::Close)});
        const auto request = RequestOf(GetParam(), server.Url(FolderPath));
        // A client may ask again on a connection that was used before; this one is new for each server.
        EXPECT_THAT(
            ErrorOfExecuting(request),
            HasSubstr(MethodOf(GetParam()) + (" " + server.Url(FolderPath).toString().toStdString()) + " failed: "))
            << fixture;
        EXPECT_EQ(request->GetStatusCode(), 0) << fixture;
    }
}

INSTANTIATE_TEST_SUITE_P(Requests, BrokenExchangeTest,
                         testing::Values(Kind::Query, Kind::Creation, Kind::Deletion, Kind::File, Kind::Move),
                         [](const testing::TestParamInfo<Kind>& tested) {
                             return std::string(MethodOf(tested.param));
                         });

}  // namespace
}  // namespace requests
}  // namespace ovsync
