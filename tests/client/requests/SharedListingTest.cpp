#include "client/requests/SharedListing.h"

#include <gmock/gmock.h>

#include <vector>

#include "client/requests/AccountConnection.h"
#include "client/requests/HttpFactory.h"
#include "client/wire/TransactionError.h"
#include "tests/client/Fixtures.h"
#include "tests/client/requests/ScriptedAnswers.h"
#include "tests/fakes/CleanEnvironment.h"
#include "tests/fakes/ScriptedServer.h"

namespace ovsync {
namespace requests {
namespace {

using sync::http::DAVPropfindRequest;
using sync::interf::IHttpRequest;
using testing::ElementsAre;
using tests::AnswerOf;
using tests::ListingAnswer;
using tests::OptionsStep;
using tests::ScriptedServer;

class SharedListingTest : public testing::Test {
protected:
    static std::shared_ptr<DAVPropfindRequest> RequestOf(const ScriptedServer& server,
                                                         int depth = DAVPropfindRequest::Children) {
        return HttpFactory().CreatePropfindRequest(std::make_shared<QUrl>(server.Url(QStringLiteral("/Projects/A/"))),
                                                   0, depth);
    }

    void Execute(const std::shared_ptr<DAVPropfindRequest>& request) {
        shared.Execute({request}, [this](const IRequestSender::Request& /*request*/, IHttpRequest::RequestState state) {
            states.push_back(state);
        });
    }

    const tests::CleanEnvironment environment;
    const ScriptedServer::Step listing = ScriptedServer::Answer(ListingAnswer(QStringLiteral("apache.xml")));
    SharedListing shared{std::make_shared<AccountConnection>(wire::ConnectionSettings(), QAuthenticator())};
    std::vector<IHttpRequest::RequestState> states;
};

TEST_F(SharedListingTest, AnswersTheNextOneThatAsksTheSameAndNoMore) {
    ScriptedServer server({OptionsStep(), listing, listing});
    const auto first = RequestOf(server);
    Execute(first);
    const QStringList whole = tests::Describe(*first->GetResult());
    first->GetResult()->fileResponses.clear();
    const auto second = RequestOf(server);
    Execute(second);
    EXPECT_EQ(second->GetStatusCode(), 207);
    EXPECT_EQ(tests::Describe(*second->GetResult()), whole);
    EXPECT_EQ(second->GetResponseHeaders(), first->GetResponseHeaders());
    EXPECT_THAT(states, ElementsAre(IHttpRequest::StateAnswered, IHttpRequest::StateAnswered));
    Execute(RequestOf(server));
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(SharedListingTest, WhatAsksSomethingElseIsSent) {
    ScriptedServer server({OptionsStep(), listing, listing, listing, listing});
    Execute(RequestOf(server));
    const auto conditional = RequestOf(server);
    conditional->SetModifiedSinceTime(QDateTime(QDate(2026, 11, 20), QTime(10, 15, 30), Qt::UTC));
    Execute(conditional);
    Execute(RequestOf(server, DAVPropfindRequest::Tree));
    const auto named = RequestOf(server);
    named->SetProperties({QStringLiteral("{DAV:}D:getetag")});
    Execute(named);
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(SharedListingTest, AFailureIsNotShared) {
    ScriptedServer server({OptionsStep(), AnswerOf("bad/no-entries"), listing});
    EXPECT_THROW(Execute(RequestOf(server)), wire::TransactionError);
    const auto second = RequestOf(server);
    Execute(second);
    EXPECT_TRUE(second->GetResult());
    EXPECT_THAT(states, ElementsAre(IHttpRequest::StateFailed, IHttpRequest::StateAnswered));
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

}  // namespace
}  // namespace requests
}  // namespace ovsync
