#include "client/wire/HttpConnection.h"

#include <gmock/gmock.h>

#include <QCryptographicHash>
#include <QRegularExpression>
#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include "client/requests/PropfindRequest.h"
#include "client/wire/TransactionError.h"
#include "tests/client/Fixtures.h"
#include "tests/client/requests/ScriptedAnswers.h"
#include "tests/fakes/CleanEnvironment.h"
#include "tests/fakes/ScriptedServer.h"
#include "tests/fakes/SelfSignedCertificate.h"

namespace ovsync {
namespace wire {

using requests::PropfindRequest;
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using tests::AnswerOf;
using tests::CleanEnvironment;
using tests::FixtureAnswer;
using tests::FixtureBytes;
using tests::ListingAnswer;
using tests::ScriptedServer;

using Ending = ScriptedServer::Ending;

const QString ListedPath = QStringLiteral("/Projects/A/");
const int FilesInListing = 2;

QAuthenticator Credentials(const char* user, const char* password) {
    QAuthenticator credentials;
    credentials.setUser(QString::fromUtf8(user));
    credentials.setPassword(QString::fromUtf8(password));
    return credentials;
}

QByteArray Listing() {
    return ListingAnswer(QStringLiteral("apache.xml"));
}

QByteArray Md5(const QByteArray& text) {
    return QCryptographicHash::hash(text, QCryptographicHash::Md5).toHex();
}

/// Whether the request proves to know the password, for the nonce of unauthorized-digest-401.http.
bool IsDigestRight(const ScriptedServer::Request& request, const char* user, const char* password) {
    const QString header = QString::fromUtf8(request.headers.value("authorization"));
    const auto field = [&header](const char* name) {
        const QRegularExpression pattern(QStringLiteral("[ ,]%1=\"?([^\",]*)").arg(QLatin1String(name)));
        return pattern.match(header).captured(1).toUtf8();
    };
    const QByteArray secret = Md5(QByteArray(user) + ":files:" + password);
    const QByteArray asked = Md5(request.method + ':' + request.target);
    const QByteArray expected = Md5(secret + ":0a4f113b:" + field("nc") + ':' + field("cnonce") + ":auth:" + asked);
    return header.startsWith(QLatin1String("Digest ")) && field("username") == user && field("uri") == request.target &&
           field("response") == expected;
}

class HttpConnectionTest : public testing::Test {
protected:
    /// "" when nothing was thrown.
    static std::string ErrorOf(HttpConnection& session, PropfindRequest& request) {
        try {
            session.Perform(request);
        } catch (const TransactionError& error) {
            return error.Utf8Message();
        }
        return "";
    }

    TransactionError::Cause CauseOf(const QUrl& url) const {
        HttpConnection session(settings, QAuthenticator());
        PropfindRequest request(url, PropfindRequest::Children);
        try {
            session.Perform(request);
        } catch (const TransactionError& error) {
            return error.Why();
        }
        ADD_FAILURE() << "no error";
        return TransactionError::Cause::Other;
    }

    static void ExpectListing(HttpConnection& session, const QUrl& url) {
        PropfindRequest request(url, PropfindRequest::Children);
        EXPECT_EQ(ErrorOf(session, request), "");
        ASSERT_TRUE(request.GetResult());
        EXPECT_EQ(request.GetResult()->fileResponses.size(), FilesInListing);
    }

    const CleanEnvironment environment;
    ConnectionSettings settings;
};

TEST_F(HttpConnectionTest, AnswersABasicChallenge) {
    const auto listing = [](const ScriptedServer::Request& request) {
        return request.headers.value("authorization") == "Basic " + QByteArray("alice:s\xC3\xA9same").toBase64()
                   ? Listing()
                   : FixtureAnswer(QStringLiteral("statuses/forbidden-403")).Bytes();
    };
    ScriptedServer server({AnswerOf("statuses/unauthorized-basic-401"), {listing}, {listing}});
    HttpConnection session(settings, Credentials("alice", "s\xC3\xA9same"));
    ExpectListing(session, server.Url(ListedPath));
    ExpectListing(session, server.Url(ListedPath));
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    EXPECT_FALSE(server.Requests().first().headers.contains("authorization"));
    EXPECT_EQ(server.Requests().last().connection, 1);
    EXPECT_EQ(server.Requests().first().body, server.Requests().last().body);
}

TEST_F(HttpConnectionTest, AnswersADigestChallenge) {
    const auto listing = [](const ScriptedServer::Request& request) {
        return IsDigestRight(request, "alice", "sesame")
                   ? Listing()
                   : FixtureAnswer(QStringLiteral("statuses/forbidden-403")).Bytes();
    };
    ScriptedServer server({AnswerOf("statuses/unauthorized-digest-401"), {listing}, {listing}});
    HttpConnection session(settings, Credentials("alice", "sesame"));
    ExpectListing(session, server.Url(ListedPath));
    ExpectListing(session, server.Url(ListedPath));
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    EXPECT_FALSE(server.Requests().last().headers.value("authorization").contains("sesame"));
}

const char* const InClear = "the password is asked for in clear, as Basic over http";

TEST_F(HttpConnectionTest, AfterDigestNoPasswordIsSentInClear) {
    ScriptedServer server({AnswerOf("statuses/unauthorized-digest-401"), ScriptedServer::Answer(Listing()),
                           AnswerOf("statuses/unauthorized-basic-401"),
                           AnswerOf("statuses/unauthorized-basic-401", Ending::Close),
                           AnswerOf("statuses/unauthorized-basic-401"), AnswerOf("statuses/unauthorized-digest-401"),
                           ScriptedServer::Answer(Listing())});
    HttpConnection session(settings, Credentials("alice", "sesame"));
    ExpectListing(session, server.Url(ListedPath));
    for (int i = 0; i < 2; ++i) {
        PropfindRequest request(server.Url(ListedPath), PropfindRequest::Children);
        EXPECT_THAT(ErrorOf(session, request), AllOf(HasSubstr(InClear), HasSubstr("status 401")));
        EXPECT_FALSE(request.GetResult());
    }
    const ConnectionSettings copy = settings;
    HttpConnection other(copy, Credentials("alice", "sesame"));
    PropfindRequest request(server.Url(ListedPath), PropfindRequest::Children);
    EXPECT_THAT(ErrorOf(other, request), HasSubstr(InClear));
    ExpectListing(other, server.Url(ListedPath));
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    for (const ScriptedServer::Request& seen : server.Requests()) {
        EXPECT_FALSE(seen.headers.value("authorization").startsWith("Basic"));
    }
}

TEST_F(HttpConnectionTest, AfterDigestNoDisguiseOfBasicIsAnswered) {
    settings.digestHosts->Add(QUrl(QStringLiteral("http://127.0.0.1/")));
    const QByteArray challenges[] = {
        "WWW-Authenticate: Basic realm=\"x, Digest y\"\r\n",
        "WWW-Authenticate: basic realm=\"x\"\r\n\tWWW-Authenticate: Digest realm=\"x\", nonce=\"y\"\r\n",
        "WWW-Authenticate: Other, BASIC realm=\"Digest\"\r\nX-Authenticate: Digest realm=\"x\"\r\n",
        "X: y\r\nwww-authenticate: Basic realm=\"\\\", Digest realm=\"\r\n",
    };
    for (const QByteArray& challenge : challenges) {
        ScriptedServer server(
            {ScriptedServer::Answer("HTTP/1.1 401 Unauthorized\r\nContent-Length: 0\r\n" + challenge + "\r\n")});
        HttpConnection session(settings, Credentials("alice", "sesame"));
        PropfindRequest request(server.Url(ListedPath), PropfindRequest::Children);
        EXPECT_THAT(ErrorOf(session, request), HasSubstr(InClear)) << challenge.constData();
        server.Stop();
        EXPECT_TRUE(server.SawItsScript());
    }
}

TEST_F(HttpConnectionTest, BasicIsForgottenWhereDigestWasTakenMeanwhile) {
    ScriptedServer server({AnswerOf("statuses/unauthorized-basic-401"),
                           ScriptedServer::Answer(Listing(), Ending::Close),
                           AnswerOf("statuses/unauthorized-digest-401"),
                           ScriptedServer::Answer(Listing(), Ending::Close), ScriptedServer::Answer(Listing())});
    HttpConnection session(settings, Credentials("alice", "sesame"));
    ExpectListing(session, server.Url(ListedPath));
    HttpConnection other(settings, Credentials("alice", "sesame"));
    ExpectListing(other, server.Url(ListedPath));
    ExpectListing(session, server.Url(ListedPath));
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    EXPECT_FALSE(server.Requests().last().headers.contains("authorization"));
}

TEST_F(HttpConnectionTest, WrongCredentialsEndInA401) {
    for (const char* challenge : {"statuses/unauthorized-basic-401", "statuses/unauthorized-digest-401"}) {
        ScriptedServer server({AnswerOf(challenge), AnswerOf(challenge)});
        HttpConnection session(settings, Credentials("alice", "wrong sesame"));
        PropfindRequest request(server.Url(ListedPath), PropfindRequest::Children);
        EXPECT_EQ(ErrorOf(session, request), "");
        EXPECT_EQ(request.GetStatusCode(), 401);
        EXPECT_FALSE(request.GetResult());
        EXPECT_THAT(session.LastAnswer().Text().toStdString(),
                    AllOf(HasSubstr("status 401"), HasSubstr("Say who you are."), Not(HasSubstr("sesame"))));
        server.Stop();
        EXPECT_TRUE(server.SawItsScript());
    }
}

TEST_F(HttpConnectionTest, WithoutCredentialsA401IsTheAnswer) {
    ScriptedServer server({AnswerOf("statuses/unauthorized-basic-401")});
    HttpConnection session(settings, QAuthenticator());
    PropfindRequest request(server.Url(ListedPath), PropfindRequest::Children);
    EXPECT_EQ(ErrorOf(session, request), "");
    EXPECT_EQ(request.GetStatusCode(), 401);
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(HttpConnectionTest, NeverNamesTheCredentialsInAnError) {
    ScriptedServer server({AnswerOf("statuses/unauthorized-basic-401"), AnswerOf("bad/login-page-with-200")});
    HttpConnection session(settings, Credentials("alice", "sesame"));
    QUrl url = server.Url(ListedPath);
    url.setUserInfo(QStringLiteral("bob:hush"));
    PropfindRequest request(url, PropfindRequest::Children);
    const std::string error = ErrorOf(session, request);
    EXPECT_THAT(error, HasSubstr("failed: the status is unexpected"));
    EXPECT_THAT(error, AllOf(Not(HasSubstr("sesame")), Not(HasSubstr("hush")), Not(HasSubstr("alice")),
                             Not(HasSubstr(QByteArray("alice:sesame").toBase64().toStdString()))));
    server.Stop();
    EXPECT_EQ(server.Requests().last().headers.value("authorization"),
              "Basic " + QByteArray("alice:sesame").toBase64());
}

TEST_F(HttpConnectionTest, SendsThePathAsItStandsInTheUrl) {
    ScriptedServer server({AnswerOf("statuses/not-found-404")});
    HttpConnection session(settings, QAuthenticator());
    QUrl url = server.Url(QStringLiteral("/"));
    url.setPath(QStringLiteral("/a%2Fb%25/%28c%29%20d;e/"), QUrl::TolerantMode);
    PropfindRequest request(url, PropfindRequest::Children);
    EXPECT_EQ(ErrorOf(session, request), "");
    server.Stop();
    EXPECT_EQ(server.Requests().first().target, "/a%2Fb%25/%28c%29%20d;e/");
}

TEST_F(HttpConnectionTest, PassesInterimAnswersOver) {
    ScriptedServer server(
        {ScriptedServer::Answer(FixtureBytes(QStringLiteral("statuses/interim-103.txt")) + Listing())});
    HttpConnection session(settings, QAuthenticator());
    ExpectListing(session, server.Url(ListedPath));
}

TEST_F(HttpConnectionTest, TakesAChunkedListingAndOneThatEndsWithTheConnection) {
    const QByteArray body = FixtureBytes(QStringLiteral("listings/apache.xml"));
    const QByteArray head = "HTTP/1.1 207 Multi-Status\r\nContent-Type: text/xml\r\n";
    QByteArray chunks;
    for (int at = 0; at < body.size(); at += 100) {
        const QByteArray chunk = body.mid(at, 100);
        chunks += QByteArray::number(chunk.size(), 16) + "\r\n" + chunk + "\r\n";
    }
    const QByteArray trailer = "0\r\nContent-Type: text/html\r\n\r\n";
    ScriptedServer server({ScriptedServer::Answer(head + "Transfer-Encoding: chunked\r\n\r\n" + chunks + trailer),
                           ScriptedServer::Answer(head + "Connection: close\r\n\r\n" + body, Ending::Close)});
    HttpConnection session(settings, QAuthenticator());
    ExpectListing(session, server.Url(ListedPath));
    ExpectListing(session, server.Url(ListedPath));
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(HttpConnectionTest, ConnectsAnewWhenTheServerClosedAnIdleConnection) {
    ScriptedServer server({ScriptedServer::Answer(Listing(), Ending::Close), ScriptedServer::Answer(Listing())});
    HttpConnection session(settings, QAuthenticator());
    ExpectListing(session, server.Url(ListedPath));
    ExpectListing(session, server.Url(ListedPath));
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    EXPECT_EQ(server.Requests().last().connection, 2);
}

TEST_F(HttpConnectionTest, WorksAgainAfterAnAnswerThatWasNone) {
    ScriptedServer server({AnswerOf("bad/entry-forbidden"), ScriptedServer::Answer(Listing())});
    HttpConnection session(settings, QAuthenticator());
    PropfindRequest request(server.Url(ListedPath), PropfindRequest::Children);
    EXPECT_NE(ErrorOf(session, request), "");
    ExpectListing(session, server.Url(ListedPath));
}

TEST_F(HttpConnectionTest, GivesUpAfterSilence) {
    settings.silenceLimit = std::chrono::milliseconds(300);
    const QByteArray listing = Listing();
    for (const int size : {0, 20, listing.size() - 10}) {
        ScriptedServer server({ScriptedServer::Answer(listing.left(size), Ending::Stall)});
        HttpConnection session(settings, QAuthenticator());
        PropfindRequest request(server.Url(ListedPath), PropfindRequest::Children);
        EXPECT_THAT(ErrorOf(session, request), HasSubstr("nothing was received or sent for 0.3 s")) << size;
        EXPECT_FALSE(request.GetResult());
    }
}

TEST_F(HttpConnectionTest, GivesUpAnAnswerThatDrips) {
    settings.slownessLimit = std::chrono::milliseconds(300);
    const QByteArray listing = Listing();
    ScriptedServer::Step step = ScriptedServer::Answer(listing);
    step.millisecondsPerByte = 20;
    ScriptedServer server({step});
    HttpConnection session(settings, QAuthenticator());
    PropfindRequest request(server.Url(ListedPath), PropfindRequest::Children);
    EXPECT_THAT(ErrorOf(session, request), HasSubstr("less than 1024 bytes a second were received for 0.3 s"));
    EXPECT_FALSE(request.GetResult());
}

TEST_F(HttpConnectionTest, OutlivesASlowAnswerThatKeepsComing) {
    settings.slownessLimit = std::chrono::milliseconds(1000);
    settings.leastRate = 2;
    ScriptedServer::Step step = ScriptedServer::Answer(ListingAnswer(QStringLiteral("file.xml")));
    step.millisecondsPerByte = 2;
    ScriptedServer server({step});
    HttpConnection session(settings, QAuthenticator());
    PropfindRequest request(server.Url(QStringLiteral("/Projects/A/b%20c.txt")), PropfindRequest::Resource);
    EXPECT_EQ(ErrorOf(session, request), "");
    EXPECT_TRUE(request.GetResult());
}

TEST_F(HttpConnectionTest, RefusesAListingThatUnpacksToMoreThanTheLimit) {
    const QByteArray packed = FixtureBytes(QStringLiteral("listings/apache.xml.gz"));
    ScriptedServer proxy({ScriptedServer::Answer(
        "HTTP/1.1 207 Multi-Status\r\nContent-Type: text/xml\r\nContent-Encoding: gzip\r\nContent-Length: " +
        QByteArray::number(packed.size()) + "\r\n\r\n" + packed)});
    qputenv("http_proxy", proxy.Url(QString()).toEncoded());
    HttpConnection session(settings, QAuthenticator());
    PropfindRequest request(QUrl(QStringLiteral("http://files.invalid/Projects/A/")), PropfindRequest::Children);
    ListingLimits limits;
    limits.bytes = {packed.size(), QStringLiteral("--bytes")};
    request.SetLimits(limits);
    EXPECT_THAT(ErrorOf(session, request), HasSubstr("the listing has more than " + std::to_string(packed.size()) +
                                                     " bytes, the limit set by --bytes"));
    EXPECT_FALSE(request.GetResult());
}

TEST_F(HttpConnectionTest, OutlivesASlowAnswerThatIsNeverSilent) {
    settings.silenceLimit = std::chrono::milliseconds(250);
    ScriptedServer::Step step = ScriptedServer::Answer(ListingAnswer(QStringLiteral("file.xml")));
    step.millisecondsPerByte = 2;
    ScriptedServer server({step});
    HttpConnection session(settings, QAuthenticator());
    PropfindRequest request(server.Url(QStringLiteral("/Projects/A/b%20c.txt")), PropfindRequest::Resource);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(ErrorOf(session, request), "");
    EXPECT_GT(std::chrono::steady_clock::now() - start, 2 * settings.silenceLimit);
    ASSERT_TRUE(request.GetResult());
    EXPECT_TRUE(request.GetResult()->isSingleResponse);
}

/// Gives listings of the first level of some servers.
class ListingQueue : public ITransactionQueue {
public:
    explicit ListingQueue(const std::vector<QUrl>& urls) {
        for (const QUrl& url : urls) {
            listings.push_back(std::make_unique<PropfindRequest>(url, PropfindRequest::Children));
        }
    }

    HttpTransaction* Next() override { return next == listings.size() ? nullptr : listings[next++].get(); }
    void OnPerformed(HttpTransaction& transaction) override {
        EXPECT_EQ(static_cast<PropfindRequest&>(transaction).GetStatusCode(), 207);
        ++performed;
    }

    std::vector<std::unique_ptr<PropfindRequest>> listings;
    size_t next = 0;
    size_t performed = 0;
};

TEST_F(HttpConnectionTest, PerformsSeveralAtTheSameTimeAndNoMore) {
    std::promise<void> isAnswered;
    ScriptedServer slow({{[wait = isAnswered.get_future().share()](const ScriptedServer::Request&) {
        wait.wait();
        return Listing();
    }}});
    ScriptedServer quick({ScriptedServer::Answer(Listing()), {[&isAnswered](const ScriptedServer::Request&) {
                              isAnswered.set_value();
                              return Listing();
                          }}});
    HttpConnection connection{ConnectionSettings(), QAuthenticator()};
    ListingQueue queue({slow.Url(ListedPath), quick.Url(ListedPath), quick.Url(ListedPath)});
    connection.PerformAll(queue, 2);
    EXPECT_EQ(queue.performed, 3U);
    for (const auto& listing : queue.listings) {
        EXPECT_EQ(listing->GetResult()->fileResponses.size(), FilesInListing);
    }
    slow.Stop();
    quick.Stop();
    EXPECT_TRUE(slow.SawItsScript());
    EXPECT_EQ(quick.Requests().last().connection, 1);
}

TEST_F(HttpConnectionTest, TheSilenceOfOneIsNotBrokenByOthers) {
    ScriptedServer silent({ScriptedServer::Answer(QByteArray(), Ending::Stall)});
    ScriptedServer::Step dripping = ScriptedServer::Answer(Listing());
    dripping.millisecondsPerByte = 2;
    ScriptedServer talking({dripping});
    ConnectionSettings settings;
    settings.silenceLimit = std::chrono::milliseconds(300);
    HttpConnection connection(settings, QAuthenticator());
    ListingQueue queue({talking.Url(ListedPath), silent.Url(ListedPath)});
    try {
        connection.PerformAll(queue, 2);
        FAIL();
    } catch (const TransactionError& error) {
        EXPECT_THAT(error.Utf8Message(), AllOf(HasSubstr(silent.Url(ListedPath).toString().toStdString()),
                                               HasSubstr("nothing was received or sent for 0.3 s")));
    }
    // What was under way is broken off, and the connection can be used again.
    EXPECT_EQ(queue.listings.front()->GetStatusCode(), 0);
    ScriptedServer server({ScriptedServer::Answer(Listing())});
    ListingQueue another({server.Url(ListedPath)});
    connection.PerformAll(another, 2);
    EXPECT_EQ(another.performed, 1U);
}

TEST_F(HttpConnectionTest, TakesTheProxyFromTheEnvironment) {
    ScriptedServer proxy({ScriptedServer::Answer(Listing())});
    qputenv("http_proxy", proxy.Url(QString()).toEncoded());
    HttpConnection session(settings, QAuthenticator());
    ExpectListing(session, QUrl(QStringLiteral("http://files.invalid/Projects/A/")));
    proxy.Stop();
    EXPECT_TRUE(proxy.SawItsScript());
    EXPECT_EQ(proxy.Requests().first().target, "http://files.invalid/Projects/A/");
}

TEST_F(HttpConnectionTest, GoesPastTheProxyWhereTheEnvironmentSaysSo) {
    ScriptedServer server({ScriptedServer::Answer(Listing())});
    qputenv("http_proxy", "http://proxy.invalid:1/");
    qputenv("no_proxy", "127.0.0.1");
    HttpConnection session(settings, QAuthenticator());
    ExpectListing(session, server.Url(ListedPath));
}

TEST_F(HttpConnectionTest, AsksForCompressionOnlyOutsideTheMachine) {
    ScriptedServer server({ScriptedServer::Answer(Listing())});
    ScriptedServer proxy({ScriptedServer::Answer(Listing())});
    HttpConnection session(settings, QAuthenticator());
    ExpectListing(session, server.Url(ListedPath));
    qputenv("http_proxy", proxy.Url(QString()).toEncoded());
    ExpectListing(session, QUrl(QStringLiteral("http://files.invalid/Projects/A/")));
    server.Stop();
    proxy.Stop();
    EXPECT_FALSE(server.Requests().first().headers.contains("accept-encoding"));
    EXPECT_EQ(proxy.Requests().first().headers.value("accept-encoding"), "gzip");
}

TEST_F(HttpConnectionTest, UnpacksACompressedListingAndRefusesHalfOfOne) {
    const QByteArray packed = FixtureBytes(QStringLiteral("listings/apache.xml.gz"));
    const auto answer = [](const QByteArray& body) {
        return ScriptedServer::Answer(
            "HTTP/1.1 207 Multi-Status\r\nContent-Type: text/xml\r\nContent-Encoding: gzip\r\nContent-Length: " +
            QByteArray::number(body.size()) + "\r\n\r\n" + body);
    };
    ScriptedServer proxy({answer(packed), answer(packed.left(packed.size() / 2))});
    qputenv("http_proxy", proxy.Url(QString()).toEncoded());
    HttpConnection session(settings, QAuthenticator());
    const QUrl url(QStringLiteral("http://files.invalid/Projects/A/"));
    ExpectListing(session, url);
    PropfindRequest request(url, PropfindRequest::Children);
    EXPECT_NE(ErrorOf(session, request), "");
    EXPECT_FALSE(request.GetResult());
}

using Cause = TransactionError::Cause;

TEST_F(HttpConnectionTest, ErrorsSayWhy) {
    EXPECT_EQ(CauseOf(QUrl(QStringLiteral("http://127.0.0.1:1/"))), Cause::NoConnection);
    EXPECT_EQ(CauseOf(QUrl(QStringLiteral("http://nothing.invalid/"))), Cause::UnknownHost);
    const auto causeOf = [this](const QByteArray& answer, Ending ending = Ending::Close) {
        const ScriptedServer server({ScriptedServer::Answer(answer, ending)});
        return CauseOf(server.Url(ListedPath));
    };
    EXPECT_EQ(causeOf("SSH-2.0\r\n"), Cause::WrongProtocol);
    EXPECT_EQ(causeOf("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n"), Cause::WrongAnswer);
    EXPECT_EQ(causeOf(Listing().chopped(1)), Cause::CutOff);
    settings.silenceLimit = std::chrono::milliseconds(50);
    EXPECT_EQ(causeOf(Listing().chopped(1), Ending::Stall), Cause::Silence);
}

TEST_F(HttpConnectionTest, ACancelledTransactionSaysSo) {
    HttpConnection session(settings, QAuthenticator());
    session.Cancel();
    PropfindRequest request(QUrl(QStringLiteral("http://127.0.0.1:1/")), PropfindRequest::Children);
    try {
        session.Perform(request);
        ADD_FAILURE() << "no error";
    } catch (const TransactionError& error) {
        EXPECT_EQ(error.Why(), Cause::Cancelled);
    }
}

TEST_F(HttpConnectionTest, AnErrorHasWhatItIsMadeOf) {
    const ScriptedServer server({ScriptedServer::Answer(
        "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: 6\r\n\r\n<html>", Ending::Close)});
    HttpConnection session(settings, QAuthenticator());
    PropfindRequest request(server.Url(ListedPath), PropfindRequest::Children);
    try {
        session.Perform(request);
        ADD_FAILURE() << "no error";
    } catch (const TransactionError& error) {
        EXPECT_EQ(error.Answer().status, 200);
        EXPECT_EQ(error.Answer().contentType, QByteArray("text/html"));
        EXPECT_EQ(error.Answer().firstBytes, QByteArray("<html>"));
        EXPECT_EQ(error.Reason(), QStringLiteral("the status is unexpected for this request"));
    }
}

TEST_F(HttpConnectionTest, ABandwidthMakesUpForAShortDelayAndForNoMore) {
    Bandwidth bandwidth(1000000);
    const auto start = Bandwidth::Clock::now();
    bandwidth.Take(Bandwidth::Way::Send, 10000);
    bandwidth.Take(Bandwidth::Way::Send, 10000);
    EXPECT_LT(bandwidth.FreeAt(Bandwidth::Way::Send), start);
    bandwidth.Take(Bandwidth::Way::Send, 1000000);
    EXPECT_GT(bandwidth.FreeAt(Bandwidth::Way::Send), start + std::chrono::milliseconds(900));
}

TEST_F(HttpConnectionTest, ALimitedBandwidthBringsTheSame) {
    settings.bandwidth = std::make_shared<Bandwidth>(64 * 1024);
    const ScriptedServer server({ScriptedServer::Answer(Listing())});
    HttpConnection session(settings, QAuthenticator());
    ExpectListing(session, server.Url(ListedPath));
}

class SecureHttpSessionTest : public HttpConnectionTest {
protected:
    const tests::SelfSignedCertificate selfSigned;
    const ScriptedServer::Certificate& certificate = selfSigned.Files();
};

TEST_F(SecureHttpSessionTest, TrustsACertificateOfTheCaFile) {
    ScriptedServer server({ScriptedServer::Answer(Listing()), ScriptedServer::Answer(Listing())}, certificate);
    settings.caFile = certificate.certificateFile;
    HttpConnection session(settings, QAuthenticator());
    ExpectListing(session, server.Url(ListedPath));
    ExpectListing(session, server.Url(ListedPath));
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    EXPECT_EQ(server.Requests().last().connection, 1);
}

TEST_F(SecureHttpSessionTest, AfterDigestAnswersABasicChallengeThatNobodyElseHears) {
    ScriptedServer server({AnswerOf("statuses/unauthorized-basic-401"), ScriptedServer::Answer(Listing())},
                          certificate);
    settings.caFile = certificate.certificateFile;
    settings.digestHosts->Add(server.Url(ListedPath));
    HttpConnection session(settings, Credentials("alice", "sesame"));
    ExpectListing(session, server.Url(ListedPath));
}

TEST_F(SecureHttpSessionTest, RefusesACertificateThatNobodyVouchesFor) {
    ScriptedServer server({}, certificate);
    HttpConnection session(settings, Credentials("alice", "sesame"));
    PropfindRequest request(server.Url(ListedPath), PropfindRequest::Children);
    EXPECT_THAT(ErrorOf(session, request), AllOf(HasSubstr("the server's certificate is not trusted: "),
                                                 HasSubstr("self-signed certificate"), HasSubstr("no answer")));
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(SecureHttpSessionTest, RefusesACertificateForAnotherHost) {
    ScriptedServer server({}, certificate);
    settings.caFile = certificate.certificateFile;
    HttpConnection session(settings, QAuthenticator());
    QUrl url = server.Url(ListedPath);
    url.setHost(QStringLiteral("localhost"));
    PropfindRequest request(url, PropfindRequest::Children);
    EXPECT_THAT(ErrorOf(session, request), HasSubstr("the server's certificate is not trusted: "));
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(SecureHttpSessionTest, RefusesAListingThatIsCutOffWithoutAWord) {
    const QByteArray body = FixtureBytes(QStringLiteral("listings/apache.xml"));
    ScriptedServer server(
        {ScriptedServer::Answer("HTTP/1.1 207 Multi-Status\r\nContent-Type: text/xml\r\n\r\n" + body, Ending::Reset)},
        certificate);
    settings.caFile = certificate.certificateFile;
    HttpConnection session(settings, QAuthenticator());
    PropfindRequest request(server.Url(ListedPath), PropfindRequest::Children);
    EXPECT_THAT(ErrorOf(session, request), HasSubstr("cut off or damaged"));
}

TEST_F(SecureHttpSessionTest, NamesACaFileThatIsNotThere) {
    settings.caFile = environment.HomeFile(QStringLiteral("missing.pem"));
    HttpConnection session(settings, QAuthenticator());
    PropfindRequest request(QUrl(QStringLiteral("https://127.0.0.1:1/")), PropfindRequest::Children);
    ScriptedServer server({}, certificate);
    PropfindRequest toServer(server.Url(ListedPath), PropfindRequest::Children);
    EXPECT_THAT(ErrorOf(session, toServer), HasSubstr("missing.pem"));
    EXPECT_EQ(CauseOf(server.Url(ListedPath)), Cause::NoCertificates);
}

TEST_F(SecureHttpSessionTest, SaysWhatIsWrongWithACertificate) {
    const ScriptedServer server({}, certificate);
    QUrl url = server.Url(ListedPath);
    EXPECT_EQ(CauseOf(url), Cause::NotTrusted);
    settings.caFile = certificate.certificateFile;
    url.setHost(QStringLiteral("localhost"));
    EXPECT_EQ(CauseOf(url), Cause::WrongName);
}

}  // namespace
}  // namespace wire
}  // namespace ovsync
