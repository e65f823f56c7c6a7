#include "client/requests/RequestManager.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "client/library/RequestAuthenticatorFactory.h"
#include "client/requests/AccountConnection.h"
#include "client/requests/HttpFactory.h"
#include "client/wire/TransactionError.h"
#include "host/http/DAVPropfindRequest.h"
#include "tests/client/Fixtures.h"
#include "tests/client/requests/BadAnswers.h"
#include "tests/client/requests/ScriptedAnswers.h"
#include "tests/fakes/CleanEnvironment.h"
#include "tests/fakes/ScriptedServer.h"

namespace ovsync {
namespace requests {

using library::RequestAuthenticatorFactory;
using wire::ConnectionSettings;
using wire::ListingLimits;
using wire::TransactionError;
namespace {

using sync::http::DAVPropfindRequest;
using sync::interf::IHttpRequest;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using tests::AnswerOf;
using tests::BadAnswer;
using tests::BadAnswers;
using tests::CleanEnvironment;
using tests::FixtureAnswer;
using tests::FixtureBytes;
using tests::FixtureNameOf;
using tests::ListingAnswer;
using tests::NameOf;
using tests::OptionsStep;
using tests::RawAnswer;
using tests::ScriptedServer;

using Ending = ScriptedServer::Ending;

const QString QueriedPath = QStringLiteral("/Projects/A/");

std::shared_ptr<DAVPropfindRequest> RequestOf(const QUrl& url, int depth = DAVPropfindRequest::Children) {
    return HttpFactory().CreatePropfindRequest(std::make_shared<QUrl>(url), 0, depth);
}

class RequestManagerTest : public testing::Test {
protected:
    /// "" when nothing was thrown.
    std::string ErrorOfExecuting(const QList<std::shared_ptr<IHttpRequest>>& requests) {
        for (const std::shared_ptr<IHttpRequest>& request : requests) {
            QObject::connect(request.get(), &IHttpRequest::RequestCompleted,
                             [this](const std::shared_ptr<IHttpRequest>& /*completed*/,
                                    IHttpRequest::RequestState state) { states.push_back(state); });
        }
        try {
            manager.Execute(requests);
        } catch (const TransactionError& error) {
            return error.Utf8Message();
        }
        return "";
    }

    const CleanEnvironment environment;
    const QString user = QStringLiteral("alice");
    const QString password = QStringLiteral("open sesame");
    const std::shared_ptr<AccountConnection> connection = std::make_shared<AccountConnection>(
        ConnectionSettings(), RequestAuthenticatorFactory(user, password).CreateAuthenticator(0));
    RequestManager manager{connection};
    std::vector<IHttpRequest::RequestState> states;
};

TEST(ListingLimitsTest, AnAnswerAboveALimitIsNoListing) {
    const QByteArray listing = ListingAnswer(QStringLiteral("apache.xml"));
    const int bodySize = FixtureBytes(QStringLiteral("listings/apache.xml")).size();
    const auto errorOf = [&](const ListingLimits& limits) {
        ScriptedServer server({OptionsStep(), ScriptedServer::Answer(listing)});
        const CleanEnvironment environment;
        ConnectionSettings settings;
        settings.listing = limits;
        RequestManager manager(std::make_shared<AccountConnection>(settings, QAuthenticator()));
        const auto request = RequestOf(server.Url(QueriedPath));
        try {
            manager.Execute({request});
        } catch (const TransactionError& error) {
            EXPECT_FALSE(request->GetResult());
            return error.Utf8Message();
        }
        return std::string();
    };
    ListingLimits limits;
    limits.entries = {4, QStringLiteral("--entries")};
    limits.bytes = {bodySize, QStringLiteral("--bytes")};
    EXPECT_EQ(errorOf(limits), "");
    limits.entries.value = 3;
    EXPECT_THAT(errorOf(limits), HasSubstr("the listing has more than 3 entries, the limit set by --entries"));
    limits.entries.value = 4;
    limits.bytes.value = bodySize - 1;
    EXPECT_THAT(errorOf(limits), HasSubstr("the listing has more than " + std::to_string(bodySize - 1) +
                                           " bytes, the limit set by --bytes"));
}

TEST_F(RequestManagerTest, WaitsForNoBodyOfTheAnswerToTheQuestionWhatAServerKnows) {
    const QByteArray endless = "HTTP/1.1 200 OK\r\nDAV: 1\r\n\r\n" + QByteArray(1024 * 1024, 'x');
    for (const auto& options :
         {AnswerOf("statuses/options-endless-200", Ending::Stall),
          AnswerOf("statuses/options-endless-200", Ending::Close), ScriptedServer::Answer(endless, Ending::Stall)}) {
        ScriptedServer server({options, ScriptedServer::Answer(ListingAnswer(QStringLiteral("apache.xml")))});
        const auto request = RequestOf(server.Url(QueriedPath));
        EXPECT_EQ(ErrorOfExecuting({request}), "");
        EXPECT_TRUE(request->GetResult());
        server.Stop();
        EXPECT_TRUE(server.SawItsScript());
        EXPECT_FALSE(server.Requests().last().body.contains("syncproperties"));
        EXPECT_EQ(server.Requests().last().connection, 2);
    }
}

TEST_F(RequestManagerTest, FillsTheResultOfAListing) {
    ScriptedServer server({OptionsStep(), ScriptedServer::Answer(ListingAnswer(QStringLiteral("apache.xml")))});
    const auto request = RequestOf(server.Url(QueriedPath));
    EXPECT_EQ(ErrorOfExecuting({request}), "");
    ASSERT_TRUE(request->GetResult());
    EXPECT_EQ(request->GetStatusCode(), 207);
    EXPECT_EQ(request->GetResult()->fileResponses.size(), 2);
    EXPECT_EQ(request->GetResult()->serverTime, QDateTime(QDate(2026, 11, 20), QTime(10, 15, 31), Qt::UTC));
    EXPECT_THAT(states, ElementsAre(IHttpRequest::StateAnswered));

    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    EXPECT_EQ(server.Requests().last().method, "PROPFIND");
    EXPECT_EQ(server.Requests().last().target, "/Projects/A/");
    EXPECT_EQ(server.Requests().last().headers.value("depth"), "1");
    EXPECT_TRUE(server.Requests().last().headers.value("user-agent").startsWith("ovsync/"));
    EXPECT_FALSE(server.Requests().last().headers.contains("expect"));
    EXPECT_FALSE(server.Requests().last().headers.contains("authorization"));
    EXPECT_TRUE(server.Requests().last().body.contains("<P:syncproperties/>"));
}

TEST_F(RequestManagerTest, SendsTheRequestsInOrderOverOneConnection) {
    ScriptedServer server({OptionsStep(), ScriptedServer::Answer(ListingAnswer(QStringLiteral("apache.xml"))),
                           AnswerOf("bad/found-302"),
                           ScriptedServer::Answer(ListingAnswer(QStringLiteral("nginx.xml")))});
    const auto first = RequestOf(server.Url(QueriedPath));
    const auto second = RequestOf(server.Url(QStringLiteral("/B/")));
    const auto third = RequestOf(server.Url(QueriedPath));
    EXPECT_EQ(ErrorOfExecuting({first, second}), "");
    EXPECT_EQ(ErrorOfExecuting({third}), "");
    EXPECT_EQ(first->GetResult()->collectionResponses.size(), 1);
    EXPECT_EQ(third->GetResult()->collectionResponses.size(), 0);

    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    EXPECT_EQ(server.Requests().value(2).target, "/B/");
    EXPECT_EQ(server.Requests().last().connection, 1);
}

TEST_F(RequestManagerTest, ARequestThatIsExecutedAgainForgetsItsFirstAnswer) {
    ScriptedServer server({OptionsStep(), ScriptedServer::Answer(ListingAnswer(QStringLiteral("apache.xml"))),
                           AnswerOf("bad/entry-forbidden")});
    const auto request = RequestOf(server.Url(QueriedPath));
    EXPECT_EQ(ErrorOfExecuting({request}), "");
    EXPECT_TRUE(request->GetResult());
    EXPECT_NE(ErrorOfExecuting({request}), "");
    EXPECT_FALSE(request->GetResult());
}

TEST_F(RequestManagerTest, LeavesFailuresByStatusToTheLibrary) {
    for (const char* name : {"bad-request-400", "forbidden-403", "not-found-404", "locked-423", "broken-500"}) {
        const QByteArray answer = FixtureAnswer(QStringLiteral("statuses/") + QLatin1String(name)).Bytes();
        ScriptedServer server({OptionsStep(), ScriptedServer::Answer(answer)});
        const auto request = RequestOf(server.Url(QueriedPath));
        EXPECT_EQ(ErrorOfExecuting({request}), "");
        EXPECT_EQ(request->GetStatusCode(), QByteArray(name).right(3).toInt());
        EXPECT_FALSE(request->GetResult());
        EXPECT_THAT(connection->LastAnswer().Text().toStdString(),
                    AllOf(HasSubstr("status " + QByteArray(name).right(3).toStdString()),
                          HasSubstr("content type text/plain"), HasSubstr("the body begins: Because")));
        server.Stop();
        EXPECT_TRUE(server.SawItsScript());
    }
}

TEST_F(RequestManagerTest, FollowsNoRedirect) {
    ScriptedServer server({OptionsStep(), AnswerOf("bad/found-302")});
    const auto request = RequestOf(server.Url(QueriedPath));
    EXPECT_EQ(ErrorOfExecuting({request}), "");
    EXPECT_EQ(request->GetStatusCode(), 302);
    EXPECT_FALSE(request->GetResult());
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(RequestManagerTest, SaysWhereARedirectLeads) {
    for (const char* fixture : {"bad/moved-301", "bad/redirected-307"}) {
        ScriptedServer server({OptionsStep(), AnswerOf(fixture)});
        EXPECT_THAT(ErrorOfExecuting({RequestOf(server.Url(QueriedPath))}),
                    HasSubstr(" to http://elsewhere.invalid/, content type"));
    }
}

TEST_F(RequestManagerTest, AsksForACollectionWithTheSlashThatTheServerMisses) {
    ScriptedServer server({AnswerOf("statuses/slash-missing-301"), AnswerOf("folders/found-without-href-207")});
    const auto request = RequestOf(server.Url(QStringLiteral("/Projects/A%20b")), DAVPropfindRequest::Resource);
    EXPECT_EQ(ErrorOfExecuting({request}), "");
    EXPECT_EQ(request->GetStatusCode(), 207);
    EXPECT_EQ(request->GetResult()->singleResponse.getHref(), QStringLiteral("/Projects/A%20b/"));
    EXPECT_EQ(request->GetUrl(), server.Url(QStringLiteral("/Projects/A%20b")));
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    EXPECT_EQ(server.Requests().last().target, "/Projects/A%20b/");
    EXPECT_EQ(server.Requests().last().headers.value("depth"), "0");
}

TEST_F(RequestManagerTest, ASlashElsewhereIsARedirect) {
    for (const char* path : {"/Projects/B", "/Projects/A%20b/"}) {
        ScriptedServer server({AnswerOf("statuses/slash-missing-301")});
        EXPECT_THAT(ErrorOfExecuting({RequestOf(server.Url(QLatin1String(path)), DAVPropfindRequest::Resource)}),
                    HasSubstr("status 301 to http://127.0.0.1/Projects/A%20b/"));
        server.Stop();
        EXPECT_TRUE(server.SawItsScript());
    }
}

TEST_F(RequestManagerTest, TakesNotModifiedForAnAnswerToAConditionalRequest) {
    ScriptedServer server({OptionsStep(), AnswerOf("bad/not-modified-304")});
    const auto request = RequestOf(server.Url(QueriedPath));
    request->SetModifiedSinceTime(QDateTime(QDate(2026, 11, 20), QTime(10, 15, 30), Qt::UTC));
    EXPECT_EQ(ErrorOfExecuting({request}), "");
    EXPECT_EQ(request->GetStatusCode(), 304);
    ASSERT_TRUE(request->GetResult());
    EXPECT_EQ(request->GetResult()->serverTime, QDateTime(QDate(2026, 11, 20), QTime(10, 15, 31), Qt::UTC));
    EXPECT_TRUE(request->GetResult()->fileResponses.isEmpty());
    server.Stop();
    EXPECT_EQ(server.Requests().last().headers.value("if-modified-since"), "Fri, 20 Nov 2026 10:15:30 GMT");
}

TEST_F(RequestManagerTest, SendsNothingWhenARequestWasMadeByAnother) {
    class ForeignRequest : public IHttpRequest {
    public:
        int GetStatusCode() override { return 0; }
        QUrl GetUrl() override { return QUrl(); }
        QList<QPair<QByteArray, QByteArray>> GetResponseHeaders() override { return {}; }
        QByteArray GetResponseBody() override { return QByteArray(); }
    };
    ScriptedServer server({});
    try {
        manager.Execute({RequestOf(server.Url(QueriedPath)), std::make_shared<ForeignRequest>()});
        FAIL();
    } catch (const sync::core::SyncException& error) {
        EXPECT_THAT(error.Utf8Message(), HasSubstr("Request 2 of 2 was not made by this client's HTTP factory"));
    }
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(RequestManagerTest, StopsAtTheFirstAnswerThatIsNone) {
    ScriptedServer server({OptionsStep(), AnswerOf("bad/no-entries")});
    const auto second = RequestOf(server.Url(QueriedPath));
    EXPECT_NE(ErrorOfExecuting({RequestOf(server.Url(QueriedPath)), second}), "");
    EXPECT_THAT(states, ElementsAre(IHttpRequest::StateFailed));
    EXPECT_EQ(second->GetStatusCode(), 0);
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(RequestManagerTest, NamesAServerThatIsNotThere) {
    QUrl url;
    {
        const ScriptedServer gone({});
        url = gone.Url(QueriedPath);
    }
    const auto request = RequestOf(url, DAVPropfindRequest::Resource);
    EXPECT_THAT(ErrorOfExecuting({request}), AllOf(HasSubstr("PROPFIND " + url.toString().toStdString()),
                                                   HasSubstr("Failed to connect"), HasSubstr("no answer")));
    EXPECT_EQ(request->GetStatusCode(), 0);
    EXPECT_EQ(connection->LastAnswer().Text(), QStringLiteral("no answer"));
}

TEST_F(RequestManagerTest, AsksAServerOnceWhatItKnowsBeforeItsFirstListing) {
    ScriptedServer server({OptionsStep(), ScriptedServer::Answer(ListingAnswer(QStringLiteral("apache.xml"))),
                           ScriptedServer::Answer(ListingAnswer(QStringLiteral("nginx.xml")))});
    EXPECT_EQ(ErrorOfExecuting({RequestOf(server.Url(QueriedPath)), RequestOf(server.Url(QueriedPath), 2)}), "");
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    EXPECT_EQ(server.Requests().first().method, "OPTIONS");
    EXPECT_EQ(server.Requests().first().target, "/Projects/A/");
    EXPECT_EQ(server.Requests().last().connection, 1);
}

TEST_F(RequestManagerTest, AsksNothingBeforeASingleResource) {
    ScriptedServer server({ScriptedServer::Answer(ListingAnswer(QStringLiteral("empty-folder.xml")))});
    EXPECT_EQ(ErrorOfExecuting({RequestOf(server.Url(QueriedPath), 0)}), "");
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    EXPECT_TRUE(server.Requests().last().body.contains("syncproperties"));
}

TEST_F(RequestManagerTest, AsksAServerThatIsNotTheServiceForWhatIsCommonOnly) {
    ScriptedServer server({AnswerOf("statuses/options-foreign-200"),
                           ScriptedServer::Answer(ListingAnswer(QStringLiteral("apache.xml"))),
                           ScriptedServer::Answer(ListingAnswer(QStringLiteral("apache.xml")))});
    const auto second = RequestOf(server.Url(QueriedPath));
    second->SetProperties({QStringLiteral("{DAV:}P:version"), QStringLiteral("{DAV:}D:getetag"),
                           QStringLiteral("{urn:other}O:version"), QStringLiteral("{DAV:}P:attribute")});
    EXPECT_EQ(ErrorOfExecuting({RequestOf(server.Url(QueriedPath)), second}), "");
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    EXPECT_THAT(server.Requests().value(1).body.toStdString(),
                HasSubstr("<D:prop><D:resourcetype/><P:getcontentlength/><D:getlastmodified/><D:creationdate/>"
                          "<D:getetag/><A:executable xmlns:A=\"http://apache.org/dav/props/\"/>"
                          "<V:content-date xmlns:V=\"urn:ovsync\"/></D:prop>"));
    EXPECT_THAT(server.Requests().value(2).body.toStdString(),
                HasSubstr("<D:prop><D:resourcetype/><D:getetag/><O:version/></D:prop>"));
}

TEST_F(RequestManagerTest, AsksTheServiceForWhatItKnowsAndAServerThatDoesNotSayForAll) {
    for (const char* options :
         {"statuses/options-service-200", "statuses/options-service-in-two-headers-200", "statuses/options-silent-200",
          "statuses/options-foreign-405", "statuses/not-found-404"}) {
        ScriptedServer server({AnswerOf(options), ScriptedServer::Answer(ListingAnswer(QStringLiteral("apache.xml")))});
        EXPECT_EQ(ErrorOfExecuting({RequestOf(server.Url(QueriedPath))}), "") << options;
        server.Stop();
        const bool isOfService = QByteArray(options).contains("service");
        EXPECT_TRUE(server.Requests().last().body.contains(
            isOfService ? "<P:resourceclasstype/><P:syncproperties/></D:prop>"
                        : "<P:resourceclasstype/><P:syncproperties/><D:getetag/>"
                          "<A:executable xmlns:A=\"http://apache.org/dav/props/\"/>"
                          "<V:content-date xmlns:V=\"urn:ovsync\"/></D:prop>"))
            << options;
    }
}

TEST_F(RequestManagerTest, ListsNothingFromAServerThatDoesNotAnswerWhatItKnows) {
    ScriptedServer server({ScriptedServer::Answer(QByteArray(), Ending::Close)});
    const auto request = RequestOf(server.Url(QueriedPath));
    EXPECT_THAT(ErrorOfExecuting({request}), HasSubstr("/Projects/A/ failed: Empty reply"));
    EXPECT_THAT(states, ElementsAre(IHttpRequest::StateFailed));
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

class BadAnswerTest : public RequestManagerTest, public testing::WithParamInterface<BadAnswer> {};

TEST_P(BadAnswerTest, EndsInAnErrorThatSaysWhatCame) {
    const BadAnswer& bad = GetParam();
    const RawAnswer answer = FixtureAnswer(FixtureNameOf(bad), bad.fillSize);
    QList<ScriptedServer::Step> steps{ScriptedServer::Answer(answer.Bytes(), bad.ending)};
    if (bad.depth > 0) {
        steps.prepend(OptionsStep());
    }
    ScriptedServer server(steps);
    const auto request = RequestOf(server.Url(QueriedPath), bad.depth);
    const std::string error = ErrorOfExecuting({request});

    EXPECT_THAT(error, HasSubstr("PROPFIND " + server.Url(QueriedPath).toString().toStdString() + " failed: "));
    EXPECT_THAT(error, HasSubstr(bad.reason));
    const QByteArray status = answer.head.split(' ').value(1);
    if (answer.head.endsWith("\r\n\r\n") && bad.ending != Ending::Reset) {
        EXPECT_THAT(error, HasSubstr("status " + status.toStdString()));
        const QByteArray type = QByteArray(answer.head).replace("\r\n", "\n").split('\n').value(1);
        if (type.startsWith("Content-Type: ")) {
            EXPECT_THAT(error, HasSubstr("content type " + type.mid(14).toStdString()));
        } else {
            EXPECT_THAT(error, HasSubstr("no content type"));
        }
        // The frame of a chunk is not part of the body.
        const QByteArray body = answer.body.mid(qMax(0, answer.body.indexOf('<')));
        EXPECT_THAT(error, body.isEmpty()
                               ? HasSubstr("no body")
                               : HasSubstr("the body begins: " + body.left(body.indexOf(' ')).toStdString()));
    }
    EXPECT_THAT(error, Not(HasSubstr("sesame")));
    EXPECT_FALSE(request->GetResult());
    EXPECT_THAT(states, ElementsAre(IHttpRequest::StateFailed));
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

INSTANTIATE_TEST_SUITE_P(Answers, BadAnswerTest, testing::ValuesIn(BadAnswers()),
                         [](const testing::TestParamInfo<BadAnswer>& tested) { return NameOf(tested.param); });

}  // namespace
}  // namespace requests
}  // namespace ovsync
