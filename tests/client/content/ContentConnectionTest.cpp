#include "client/content/ContentConnection.h"

#include <gmock/gmock.h>

#include <QFile>
#include <algorithm>
#include <chrono>
#include <functional>
#include <future>
#include <stdexcept>
#include <string>
#include <thread>

#include "client/wire/TransactionError.h"
#include "host/http/HttpException.h"
#include "tests/client/Fixtures.h"
#include "tests/client/requests/ScriptedAnswers.h"
#include "tests/fakes/CleanEnvironment.h"
#include "tests/fakes/ScriptedServer.h"

namespace ovsync {
namespace content {

using wire::Bandwidth;
using wire::ConnectionSettings;
using wire::IContentSource;
using wire::TransactionError;
namespace {

using sync::core::SyncException;
using sync::http::HttpException;
using testing::AllOf;
using testing::HasSubstr;
using tests::AnswerOf;
using tests::CleanEnvironment;
using tests::FixtureAnswer;
using tests::ScriptedServer;

using Ending = ScriptedServer::Ending;
using Step = ScriptedServer::Step;

const QString FilePath = QStringLiteral("/Projects/A/b%20c.txt");
const QByteArray FileText = "All that there is";
/// So large that the client asks before it sends it.
const int LargeSize = 1536 * 1024 + 7;

struct DiskFull : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class Sink : public ContentSink {
public:
    ContentPart Received() override { return {content.size(), tag}; }
    void TakeVersion(const ContentVersion& told) override { version = told; }
    void Restart(qint64 size) override {
        ++restarts;
        announced = size;
        content.clear();
    }
    void GoOn() override { ++continuations; }
    void Write(const char* bytes, size_t size) override {
        if (onWrite) {
            onWrite();
        }
        content.append(bytes, static_cast<int>(size));
    }

    QByteArray content;
    /// Of the version that the content at the beginning is of.
    QByteArray tag;
    ContentVersion version;
    qint64 announced = 0;
    int restarts = 0;
    int continuations = 0;
    std::function<void()> onWrite;
};

class Source : public IContentSource {
public:
    explicit Source(const QByteArray& bytes) : content(bytes) {}

    void Restart() override {
        ++restarts;
        _at = 0;
    }
    size_t Read(char* bytes, size_t size) override {
        if (onRead) {
            onRead(_at);
        }
        const int count = qMin(static_cast<int>(size), content.size() - _at);
        std::copy_n(content.constData() + _at, count, bytes);
        _at += count;
        return static_cast<size_t>(count);
    }

    QDateTime Modified() const override { return modified; }
    QString Md5() const override { return md5; }
    std::optional<bool> IsExecutable() const override { return isExecutable; }
    bool ReplacesExecutable() const override { return replacesExecutable; }

    QByteArray content;
    QDateTime modified;
    QString md5;
    std::optional<bool> isExecutable;
    bool replacesExecutable = false;
    int restarts = 0;
    std::function<void(int at)> onRead;

private:
    int _at = 0;
};

QByteArray Bytes(int size) {
    QByteArray bytes(size, '\0');
    unsigned state = 1;
    for (char& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24U);
    }
    return bytes;
}

QAuthenticator Credentials() {
    QAuthenticator credentials;
    credentials.setUser(QStringLiteral("alice"));
    credentials.setPassword(QStringLiteral("sesame"));
    return credentials;
}

const QByteArray Authorization = "Basic " + QByteArray("alice:sesame").toBase64();

Step HeadOf(const char* name) {
    return ScriptedServer::Answer(FixtureAnswer(QLatin1String(name)).head);
}

/// Before the body came.
Step AtOnce(Step step) {
    step.takesBody = false;
    return step;
}

/// The message of the `Error` that `action` throws; "" when it throws nothing.
template <typename Error, typename Action>
std::string ErrorOf(Action action) {
    try {
        action();
    } catch (const Error& error) {
        return error.what();
    }
    return "";
}

class ContentConnectionTest : public testing::Test {
protected:
    const CleanEnvironment environment;
    ConnectionSettings settings;
};

TEST_F(ContentConnectionTest, DownloadHandsOnTheContentAndWhatTheHeadersSayOfIt) {
    ScriptedServer server({AnswerOf("contents/file-200")});
    ContentConnection session(settings, QAuthenticator());
    Sink sink;
    const ContentVersion version = session.Download(server.Url(FilePath), sink);
    EXPECT_EQ(sink.content, "All that there is,\nto the last byte");
    EXPECT_EQ(version.entityTag, "\"a-7, b\"");
    EXPECT_EQ(version.size, sink.content.size());
    EXPECT_EQ(sink.announced, sink.content.size());
    EXPECT_EQ(version.lastModified, QDateTime(QDate(2026, 11, 20), QTime(10, 15, 30), Qt::UTC));
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    EXPECT_EQ(server.Requests().first().method, "GET");
    EXPECT_EQ(server.Requests().first().target, FilePath.toLatin1());
    EXPECT_TRUE(server.Requests().first().body.isEmpty());
}

TEST_F(ContentConnectionTest, DownloadHandsOnEveryByteOfALargeFileInPieces) {
    const QByteArray content = Bytes(LargeSize);
    ScriptedServer server({ScriptedServer::Answer(
        "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(content.size()) + "\r\n\r\n" + content)});
    ContentConnection session(settings, QAuthenticator());
    Sink sink;
    int pieces = 0;
    sink.onWrite = [&pieces] { ++pieces; };
    session.Download(server.Url(FilePath), sink);
    EXPECT_EQ(sink.content, content);
    EXPECT_GT(pieces, 1);
}

TEST_F(ContentConnectionTest, DownloadOfNothingStillRestartsTheSink) {
    ScriptedServer server({AnswerOf("contents/empty-200")});
    ContentConnection session(settings, QAuthenticator());
    Sink sink;
    sink.content = "left over";
    EXPECT_EQ(session.Download(server.Url(FilePath), sink).size, 0);
    EXPECT_EQ(sink.content, "");
}

TEST_F(ContentConnectionTest, DownloadTakesContentOfUnknownSizeToItsCleanEnd) {
    ScriptedServer server(
        {AnswerOf("contents/chunked-200"),
         ScriptedServer::Answer("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + FileText, Ending::Close)});
    ContentConnection session(settings, QAuthenticator());
    for (int i = 0; i < 2; ++i) {
        Sink sink;
        EXPECT_EQ(session.Download(server.Url(FilePath), sink).size, -1);
        EXPECT_EQ(sink.announced, -1);
        EXPECT_EQ(sink.content, FileText);
    }
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(ContentConnectionTest, DownloadKeepsNothingOfTheQuestionForCredentials) {
    ScriptedServer server(
        {AnswerOf("statuses/unauthorized-basic-401"), AnswerOf("contents/file-200"), AnswerOf("contents/file-200")});
    ContentConnection session(settings, Credentials());
    Sink sink;
    session.Download(server.Url(FilePath), sink);
    session.Download(server.Url(FilePath), sink);
    EXPECT_EQ(sink.content, "All that there is,\nto the last byte");
    EXPECT_EQ(sink.restarts, 2);
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    EXPECT_EQ(server.Requests()[1].headers.value("authorization"), Authorization);
    EXPECT_EQ(server.Requests()[2].headers.value("authorization"), Authorization);
}

TEST_F(ContentConnectionTest, OnlyAStrongEntityTagCounts) {
    for (const char* answer : {"contents/weakly-tagged-200", "contents/tagged-without-quotes-200",
                               "contents/tagged-twice-200", "folders/status-200"}) {
        ScriptedServer server({AnswerOf(answer)});
        ContentConnection session(settings, QAuthenticator());
        Sink sink;
        const ContentVersion version = session.Download(server.Url(FilePath), sink);
        EXPECT_EQ(version.entityTag, "") << answer;
        EXPECT_FALSE(version.lastModified.isValid()) << answer;
    }
}

TEST_F(ContentConnectionTest, DownloadTakesNoOtherStatusForContent) {
    for (const char* answer : {"folders/status-201",     "folders/status-202",       "folders/status-203",
                               "folders/status-204",     "folders/status-206",       "folders/status-207",
                               "folders/status-300",     "folders/status-301",       "folders/status-302",
                               "folders/status-303",     "folders/status-304",       "folders/status-307",
                               "folders/status-308",     "statuses/bad-request-400", "statuses/unauthorized-basic-401",
                               "statuses/forbidden-403", "statuses/not-found-404",   "folders/status-412",
                               "statuses/broken-500",    "folders/status-507"}) {
        SCOPED_TRACE(answer);
        ScriptedServer server({AnswerOf(answer)});
        ContentConnection session(settings, QAuthenticator());
        Sink sink;
        try {
            session.Download(server.Url(FilePath), sink);
            ADD_FAILURE();
        } catch (const HttpException& error) {
            const std::string status = std::string(answer).substr(std::string(answer).size() - 3);
            EXPECT_EQ(std::to_string(error.StatusCode()), status);
            EXPECT_EQ(error.Url(), server.Url(FilePath));
            EXPECT_THAT(error.Utf8Message(), AllOf(HasSubstr("GET http://127.0.0.1"), HasSubstr(FilePath.toStdString()),
                                                   HasSubstr("status " + status)));
        }
        EXPECT_EQ(sink.restarts, 0);
        server.Stop();
        EXPECT_TRUE(server.SawItsScript());
    }
}

TEST_F(ContentConnectionTest, AnErrorShowsWhatCameInsteadOfContent) {
    ScriptedServer server({AnswerOf("folders/status-206")});
    ContentConnection session(settings, QAuthenticator());
    Sink sink;
    EXPECT_THAT(
        ErrorOf<HttpException>([&] { session.Download(server.Url(FilePath), sink); }),
        HasSubstr("failed: the service answered with 206 (status 206, content type text/plain, the body begins: "
                  "Because of this and that."));
}

/// The answer to who asks for what follows the first ten bytes of a content of fifteen.
QByteArray RestAnswer(const QByteArray& range, const QByteArray& body = "KLMNO", const QByteArray& tag = "\"v1\"") {
    return "HTTP/1.1 206 Partial Content\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n" +
           (range.isEmpty() ? range : "Content-Range: " + range + "\r\n") +
           (tag.isEmpty() ? tag : "ETag: " + tag + "\r\n") + "\r\n" + body;
}

class GoingOnTest : public ContentConnectionTest {
protected:
    GoingOnTest() {
        sink.content = "ABCDEFGHIJ";
        sink.tag = "\"v1\"";
    }

    Sink sink;
};

TEST_F(GoingOnTest, OnlyWhatIsMissingOfTheSameVersionIsAskedFor) {
    ScriptedServer server({ScriptedServer::Answer(RestAnswer("bytes 10-14/15"))});
    ContentConnection session(settings, QAuthenticator());
    const ContentVersion version = session.Download(server.Url(FilePath), sink);
    EXPECT_EQ(sink.content, "ABCDEFGHIJKLMNO");
    EXPECT_EQ(sink.restarts, 0);
    EXPECT_EQ(sink.continuations, 1);
    EXPECT_EQ(version.size, 15);
    EXPECT_EQ(sink.version.size, 15);
    EXPECT_EQ(sink.version.entityTag, "\"v1\"");
    server.Stop();
    EXPECT_EQ(server.Requests().first().headers.value("range"), "bytes=10-");
    EXPECT_EQ(server.Requests().first().headers.value("if-range"), "\"v1\"");
}

TEST_F(GoingOnTest, NothingIsAskedForInPartsWithoutAStrongTag) {
    ScriptedServer server({AnswerOf("contents/file-200")});
    ContentConnection session(settings, QAuthenticator());
    sink.tag.clear();
    session.Download(server.Url(FilePath), sink);
    EXPECT_EQ(sink.content, "All that there is,\nto the last byte");
    server.Stop();
    EXPECT_FALSE(server.Requests().first().headers.contains("range"));
    EXPECT_FALSE(server.Requests().first().headers.contains("if-range"));
}

TEST_F(GoingOnTest, AnotherVersionStartsAnew) {
    ScriptedServer server({AnswerOf("contents/file-200")});
    ContentConnection session(settings, QAuthenticator());
    session.Download(server.Url(FilePath), sink);
    EXPECT_EQ(sink.content, "All that there is,\nto the last byte");
    EXPECT_EQ(sink.restarts, 1);
    EXPECT_EQ(sink.version.entityTag, "\"a-7, b\"");
}

TEST_F(GoingOnTest, AnotherPartThanWasAskedForIsRefusedAndAllIsAskedForAnew) {
    const QByteArray answers[] = {
        RestAnswer(""),
        RestAnswer("bytes 9-13/14"),
        RestAnswer("bytes 11-15/16"),
        RestAnswer("bytes 0-4/15"),
        RestAnswer("bytes 10-14/20"),
        RestAnswer("bytes 10-14/*"),
        RestAnswer("bytes 10-9/10"),
        RestAnswer("bytes 10-x/15"),
        RestAnswer("lines 10-14/15"),
        RestAnswer("bytes 10-14/15", "KLMNO", "\"v2\""),
        RestAnswer("bytes 10-14/15", "KLMNO", "W/\"v1\""),
        RestAnswer("bytes 10-14/15", "KLMNO", ""),
        "HTTP/1.1 416 Range Not Satisfiable\r\nContent-Length: 0\r\nContent-Range: bytes */10\r\n\r\n",
    };
    for (const QByteArray& answer : answers) {
        SCOPED_TRACE(answer.toStdString());
        ScriptedServer server({ScriptedServer::Answer(answer), AnswerOf("contents/file-200")});
        ContentConnection session(settings, QAuthenticator());
        sink.content = "ABCDEFGHIJ";
        session.Download(server.Url(FilePath), sink);
        EXPECT_EQ(sink.content, "All that there is,\nto the last byte");
        EXPECT_EQ(sink.continuations, 0);
        server.Stop();
        EXPECT_TRUE(server.SawItsScript());
        EXPECT_FALSE(server.Requests().last().headers.contains("range"));
    }
}

TEST_F(GoingOnTest, APartOfAnotherLengthThanItsRangeIsNoAnswer) {
    for (const char* body : {"KLMN", "KLMNOP"}) {
        ScriptedServer server({ScriptedServer::Answer(RestAnswer("bytes 10-14/15", body))});
        ContentConnection session(settings, QAuthenticator());
        sink.content = "ABCDEFGHIJ";
        EXPECT_THAT(ErrorOf<TransactionError>([&] { session.Download(server.Url(FilePath), sink); }),
                    HasSubstr("came than the part that was announced"))
            << body;
        EXPECT_EQ(sink.restarts, 0);
    }
}

TEST_F(GoingOnTest, AServerThatSaysNoIsNotAskedAgain) {
    ScriptedServer server({AnswerOf("statuses/not-found-404")});
    ContentConnection session(settings, QAuthenticator());
    EXPECT_THAT(ErrorOf<HttpException>([&] { session.Download(server.Url(FilePath), sink); }), HasSubstr("404"));
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

struct BadContent {
    const char* answer;
    Ending ending;
    const char* reason;
};

TEST_F(ContentConnectionTest, DownloadTakesNoHalfAnswerForContent) {
    const BadContent all[] = {
        {"contents/shorter-than-announced-200", Ending::Close, "cut off or damaged"},
        {"contents/shorter-than-announced-200", Ending::Reset, "cut off or damaged"},
        {"contents/last-chunk-missing-200", Ending::Close, "cut off or damaged"},
        {"contents/last-chunk-missing-200", Ending::Reset, "cut off or damaged"},
        {"contents/head-cut-off-200", Ending::Close, "ended inside its head"},
        {"contents/two-sizes-200", Ending::KeepOpen, "more than one size"},
        {"bad/nothing", Ending::Close, "Empty reply"},
        {"bad/nothing", Ending::Reset, "cut off or damaged"},
    };
    for (const BadContent& bad : all) {
        SCOPED_TRACE(bad.answer);
        ScriptedServer server({AnswerOf(bad.answer, bad.ending)});
        ContentConnection session(settings, QAuthenticator());
        Sink sink;
        EXPECT_THAT(ErrorOf<TransactionError>([&] { session.Download(server.Url(FilePath), sink); }),
                    AllOf(HasSubstr(bad.reason), HasSubstr(FilePath.toStdString())));
    }
}

TEST_F(ContentConnectionTest, ContentIsNeverUnpacked) {
    ScriptedServer proxy({AnswerOf("contents/packed-200")});
    qputenv("http_proxy", proxy.Url(QString()).toEncoded());
    ContentConnection session(settings, QAuthenticator());
    Sink sink;
    session.Download(QUrl(QStringLiteral("http://files.invalid/a.tar.gz")), sink);
    EXPECT_EQ(sink.content, "Packed by whoever put it there");
    proxy.Stop();
    EXPECT_FALSE(proxy.Requests().first().headers.contains("accept-encoding"));
}

TEST_F(ContentConnectionTest, AnEndlessErrorPageIsBrokenOff) {
    ScriptedServer server({ScriptedServer::Answer(
        FixtureAnswer(QStringLiteral("contents/endless-500"), static_cast<int>(ContentTransaction::IgnoredBodyLimit))
            .Bytes())});
    ContentConnection session(settings, QAuthenticator());
    Sink sink;
    EXPECT_THAT(ErrorOf<TransactionError>([&] { session.Download(server.Url(FilePath), sink); }),
                AllOf(HasSubstr("above 1048576 bytes"), HasSubstr("status 500"), HasSubstr("<html>")));
}

TEST_F(ContentConnectionTest, WhatTheSinkThrowsEndsTheDownloadAndPassesThrough) {
    ScriptedServer server(
        {AnswerOf("contents/file-200"), AnswerOf("contents/file-200"), AnswerOf("contents/file-200")});
    ContentConnection session(settings, QAuthenticator());
    Sink sink;
    sink.onWrite = [] { throw DiskFull("no space left"); };
    EXPECT_THROW(session.Download(server.Url(FilePath), sink), DiskFull);
    sink.onWrite = [] { throw SyncException(QStringLiteral("no space left")); };
    EXPECT_EQ(ErrorOf<SyncException>([&] { session.Download(server.Url(FilePath), sink); }), "no space left");
    sink.onWrite = nullptr;
    session.Download(server.Url(FilePath), sink);
    EXPECT_EQ(sink.content, "All that there is,\nto the last byte");
}

TEST_F(ContentConnectionTest, DownloadGivesUpAfterSilence) {
    settings.silenceLimit = std::chrono::milliseconds(300);
    ScriptedServer server({AnswerOf("contents/shorter-than-announced-200", Ending::Stall)});
    ContentConnection session(settings, QAuthenticator());
    Sink sink;
    EXPECT_THAT(ErrorOf<TransactionError>([&] { session.Download(server.Url(FilePath), sink); }),
                HasSubstr("nothing was received or sent for 0.3 s"));
}

TEST_F(ContentConnectionTest, AnotherThreadCancelsADownloadThatWaits) {
    ScriptedServer server({AnswerOf("contents/shorter-than-announced-200", Ending::Stall)});
    ContentConnection session(settings, QAuthenticator());
    std::promise<void> begun;
    std::thread canceller([&] {
        begun.get_future().wait();
        session.Cancel();
    });
    Sink sink;
    sink.onWrite = [&begun] { begun.set_value(); };
    const std::string error = ErrorOf<TransactionError>([&] { session.Download(server.Url(FilePath), sink); });
    canceller.join();
    EXPECT_THAT(error, AllOf(HasSubstr("it was cancelled"), HasSubstr(FilePath.toStdString())));
}

TEST_F(ContentConnectionTest, NothingIsSentAfterCancel) {
    ScriptedServer server({});
    ContentConnection session(settings, QAuthenticator());
    session.Cancel();
    session.Cancel();
    Sink sink;
    Source source(FileText);
    EXPECT_THAT(ErrorOf<TransactionError>([&] { session.Download(server.Url(FilePath), sink); }),
                HasSubstr("cancelled"));
    EXPECT_THAT(ErrorOf<TransactionError>([&] { session.Look(server.Url(FilePath)); }), HasSubstr("cancelled"));
    EXPECT_THAT(ErrorOf<TransactionError>([&] {
                    session.Upload(server.Url(FilePath), source, FileText.size(), UploadCondition::New,
                                   ContentVersion());
                }),
                HasSubstr("cancelled"));
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(ContentConnectionTest, LookSaysWhatTheServerHas) {
    ScriptedServer server({HeadOf("contents/file-200"), HeadOf("statuses/not-found-404"), HeadOf("contents/file-200")});
    ContentConnection session(settings, QAuthenticator());
    const auto version = session.Look(server.Url(FilePath));
    ASSERT_TRUE(version);
    EXPECT_EQ(version->entityTag, "\"a-7, b\"");
    EXPECT_EQ(version->size, 35);
    EXPECT_TRUE(version->lastModified.isValid());
    EXPECT_FALSE(session.Look(server.Url(FilePath)));
    EXPECT_TRUE(session.Look(server.Url(FilePath)));
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    EXPECT_EQ(server.Requests().first().method, "HEAD");
}

TEST_F(ContentConnectionTest, LookTakesNothingElseForYesOrNo) {
    for (const char* answer : {"folders/status-204", "folders/status-206", "folders/status-301", "folders/status-302",
                               "statuses/unauthorized-basic-401", "statuses/forbidden-403", "statuses/broken-500"}) {
        ScriptedServer server({HeadOf(answer)});
        ContentConnection session(settings, QAuthenticator());
        EXPECT_THAT(ErrorOf<HttpException>([&] { session.Look(server.Url(FilePath)); }),
                    AllOf(HasSubstr("HEAD http://"), HasSubstr("the service answered with")))
            << answer;
    }
}

class ContentUploadTest : public ContentConnectionTest {
protected:
    UploadOutcome Upload(const ScriptedServer& server, Source& source, qint64 size) {
        return session->Upload(server.Url(FilePath), source, size, UploadCondition::New, ContentVersion()).outcome;
    }

    UploadOutcome Upload(const ScriptedServer& server, Source& source) {
        return Upload(server, source, source.content.size());
    }

    /// What `server` is not to take for a whole upload.
    template <typename Error>
    std::string ErrorOfUpload(const ScriptedServer& server, Source& source, qint64 size) {
        return ErrorOf<Error>([&] { Upload(server, source, size); });
    }

    /// Of what was broken off the server may not even have seen the beginning.
    static void ExpectNothingWhole(const ScriptedServer& server) {
        EXPECT_TRUE(server.Requests().isEmpty());
        for (const ScriptedServer::Request& request : server.BrokenOff()) {
            EXPECT_LT(request.body.size(), request.headers.value("content-length").toInt());
        }
    }

    void Restart(const QAuthenticator& credentials) {
        session = std::make_unique<ContentConnection>(settings, credentials);
    }

    std::unique_ptr<ContentConnection> session = std::make_unique<ContentConnection>(settings, QAuthenticator());
};

TEST_F(ContentUploadTest, ANewFileIsStoredOnlyWhereNoneIs) {
    ScriptedServer server({AnswerOf("folders/status-201")});
    Source source("All \0 that there is");
    source.content = Bytes(1000);
    EXPECT_EQ(Upload(server, source), UploadOutcome::Stored);
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    const ScriptedServer::Request& request = server.Requests().first();
    EXPECT_EQ(request.method, "PUT");
    EXPECT_EQ(request.target, FilePath.toLatin1());
    EXPECT_EQ(request.headers.value("if-none-match"), "*");
    EXPECT_FALSE(request.headers.contains("if-match"));
    EXPECT_EQ(request.headers.value("content-length"), "1000");
    EXPECT_FALSE(request.headers.contains("transfer-encoding"));
    EXPECT_FALSE(request.headers.contains("expect"));
    EXPECT_EQ(request.body, source.content);
}

TEST_F(ContentUploadTest, TheAnswerTellsTheTagOfWhatWasStoredAndItsTime) {
    ScriptedServer server({AnswerOf("contents/stored-201"), AnswerOf("folders/status-201")});
    Source source(FileText);
    const auto upload = [&] {
        return session->Upload(server.Url(FilePath), source, FileText.size(), UploadCondition::Any, ContentVersion());
    };
    const UploadAnswer told = upload();
    EXPECT_EQ(told.outcome, UploadOutcome::Stored);
    EXPECT_EQ(told.entityTag, "\"a-8\"");
    EXPECT_EQ(told.date, QDateTime(QDate(2026, 11, 20), QTime(10, 15, 30), Qt::UTC));
    const UploadAnswer untold = upload();
    EXPECT_EQ(untold.outcome, UploadOutcome::Stored);
    EXPECT_TRUE(untold.entityTag.isEmpty());
    EXPECT_FALSE(untold.date.isValid());
}

TEST_F(ContentUploadTest, AFileIsReplacedOnlyIfItIsStillTheSame) {
    ScriptedServer server({AnswerOf("folders/status-204")});
    Source source(FileText);
    ContentVersion known;
    known.entityTag = "\"a-7, b\"";
    known.lastModified = QDateTime(QDate(2026, 11, 20), QTime(10, 15, 30), Qt::UTC);
    EXPECT_EQ(session->Upload(server.Url(FilePath), source, FileText.size(), UploadCondition::Unchanged, known).outcome,
              UploadOutcome::Stored);
    server.Stop();
    const auto headers = server.Requests().first().headers;
    EXPECT_EQ(headers.value("if-match"), "\"a-7, b\"");
    EXPECT_FALSE(headers.contains("if-none-match"));
    EXPECT_FALSE(headers.contains("if-unmodified-since"));
}

TEST_F(ContentUploadTest, WithoutAnEntityTagAFileIsReplacedOnlyIfItsDateIsTheSame) {
    ScriptedServer server({AnswerOf("folders/status-204")});
    Source source(FileText);
    ContentVersion known;
    known.lastModified = QDateTime(QDate(2026, 11, 20), QTime(10, 15, 30), Qt::UTC);
    EXPECT_EQ(session->Upload(server.Url(FilePath), source, FileText.size(), UploadCondition::Unchanged, known).outcome,
              UploadOutcome::Stored);
    server.Stop();
    const auto headers = server.Requests().first().headers;
    EXPECT_EQ(headers.value("if-unmodified-since"), "Fri, 20 Nov 2026 10:15:30 GMT");
    EXPECT_FALSE(headers.contains("if-match"));
    EXPECT_FALSE(headers.contains("if-none-match"));
}

TEST_F(ContentUploadTest, AFileIsDeletedOnlyIfItIsStillTheSame) {
    ContentVersion known;
    known.entityTag = "\"a-7\"";
    known.lastModified = QDateTime(QDate(2026, 11, 20), QTime(10, 15, 30), Qt::UTC);
    for (const char* answer : {"folders/status-200", "folders/status-204", "statuses/not-found-404"}) {
        ScriptedServer server({AnswerOf(answer)});
        EXPECT_TRUE(session->Remove(server.Url(FilePath), known)) << answer;
        server.Stop();
        const auto request = server.Requests().first();
        EXPECT_EQ(request.method, "DELETE");
        EXPECT_EQ(request.headers.value("if-match"), "\"a-7\"");
        EXPECT_FALSE(request.headers.contains("if-unmodified-since"));
    }
    known.entityTag.clear();
    ScriptedServer server({AnswerOf("folders/status-412")});
    EXPECT_FALSE(session->Remove(server.Url(FilePath), known));
    server.Stop();
    EXPECT_EQ(server.Requests().first().headers.value("if-unmodified-since"), "Fri, 20 Nov 2026 10:15:30 GMT");
}

TEST_F(ContentUploadTest, NothingIsDeletedThatCannotBeToldApartAndARefusalIsAnError) {
    ScriptedServer server({AnswerOf("statuses/forbidden-403")});
    ContentVersion known;
    EXPECT_THAT(ErrorOf<SyncException>([&] { (void)session->Remove(server.Url(FilePath), known); }),
                HasSubstr("neither an entity tag nor a date"));
    known.entityTag = "\"a-7\"";
    EXPECT_THAT(ErrorOf<HttpException>([&] { (void)session->Remove(server.Url(FilePath), known); }), HasSubstr("403"));
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(ContentUploadTest, NothingIsReplacedWithoutAnEntityTagAndADate) {
    ScriptedServer server({});
    Source source(FileText);
    EXPECT_THAT(ErrorOf<SyncException>([&] {
                    session->Upload(server.Url(FilePath), source, FileText.size(), UploadCondition::Unchanged,
                                    ContentVersion());
                }),
                AllOf(HasSubstr(FilePath.toStdString()), HasSubstr("neither an entity tag nor a date")));
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(ContentUploadTest, AnEmptyFileIsSentAsSuch) {
    ScriptedServer server({AnswerOf("folders/status-201")});
    Source source("");
    EXPECT_EQ(Upload(server, source), UploadOutcome::Stored);
    server.Stop();
    EXPECT_EQ(server.Requests().first().headers.value("content-length"), "0");
}

TEST_F(ContentUploadTest, TheServerMayAskForCredentialsAfterItTookTheContent) {
    ScriptedServer server(
        {AnswerOf("statuses/unauthorized-basic-401"), AnswerOf("folders/status-201"), AnswerOf("folders/status-201")});
    Restart(Credentials());
    Source source(Bytes(300 * 1024));
    EXPECT_EQ(Upload(server, source), UploadOutcome::Stored);
    EXPECT_EQ(Upload(server, source), UploadOutcome::Stored);
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    EXPECT_EQ(server.Requests()[1].body, source.content);
    EXPECT_EQ(server.Requests()[1].headers.value("authorization"), Authorization);
    EXPECT_EQ(server.Requests()[2].headers.value("authorization"), Authorization);
    EXPECT_EQ(server.Requests()[2].body, source.content);
}

TEST_F(ContentUploadTest, ALargeFileIsSentOnlyOnceWhenTheServerAsksForCredentials) {
    for (const char* challenge : {"statuses/unauthorized-basic-401", "statuses/unauthorized-digest-401"}) {
        for (const Ending ending : {Ending::KeepOpen, Ending::Close}) {
            ScriptedServer server(
                {AtOnce(AnswerOf(challenge, ending)), AnswerOf("folders/status-201"), AnswerOf("folders/status-204")});
            Restart(Credentials());
            Source source(Bytes(LargeSize));
            int readFromStart = 0;
            source.onRead = [&readFromStart](int at) { readFromStart += at == 0 ? 1 : 0; };
            EXPECT_EQ(Upload(server, source), UploadOutcome::Stored);
            EXPECT_EQ(readFromStart, 1);
            EXPECT_EQ(Upload(server, source), UploadOutcome::Stored);
            server.Stop();
            EXPECT_TRUE(server.SawItsScript());
            EXPECT_FALSE(server.Requests()[0].headers.contains("authorization"));
            for (const int i : {1, 2}) {
                EXPECT_EQ(server.Requests()[i].headers.value("expect"), "100-continue");
                EXPECT_TRUE(server.Requests()[i].headers.contains("authorization"));
                EXPECT_EQ(server.Requests()[i].headers.value("content-length").toInt(), LargeSize);
                EXPECT_TRUE(server.Requests()[i].body == source.content);
            }
        }
    }
}

TEST_F(ContentUploadTest, AServerThatDoesNotSayGoOnGetsALargeFileToo) {
    Step step = AnswerOf("folders/status-201");
    step.saysGoOn = false;
    ScriptedServer server({step});
    Source source(Bytes(LargeSize));
    EXPECT_EQ(Upload(server, source), UploadOutcome::Stored);
    server.Stop();
    EXPECT_TRUE(server.Requests().first().body == source.content);
}

TEST_F(ContentUploadTest, ARefusedConditionIsNoErrorAndALargeFileIsNotSentInVain) {
    ScriptedServer server({AtOnce(AnswerOf("folders/status-412", Ending::Close)), AnswerOf("folders/status-412")});
    Source large(Bytes(LargeSize));
    large.onRead = [](int) { ADD_FAILURE(); };
    EXPECT_EQ(Upload(server, large), UploadOutcome::Refused);
    Source small(FileText);
    EXPECT_EQ(Upload(server, small), UploadOutcome::Refused);
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(ContentUploadTest, OneSessionSendsAllKindsOfRequestsOverOneConnection) {
    ScriptedServer server({AnswerOf("folders/status-201"), HeadOf("contents/file-200"), AnswerOf("contents/file-200"),
                           AnswerOf("folders/status-204"), AnswerOf("contents/file-200")});
    Source source(FileText);
    Sink sink;
    EXPECT_EQ(Upload(server, source), UploadOutcome::Stored);
    EXPECT_TRUE(session->Look(server.Url(FilePath)));
    session->Download(server.Url(FilePath), sink);
    EXPECT_EQ(Upload(server, source), UploadOutcome::Stored);
    session->Download(server.Url(FilePath), sink);
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    QByteArray methods;
    for (const ScriptedServer::Request& request : server.Requests()) {
        methods += request.method + ' ';
        EXPECT_EQ(request.body, request.method == "PUT" ? FileText : QByteArray());
        EXPECT_EQ(request.connection, 1);
    }
    EXPECT_EQ(methods, "PUT HEAD GET PUT GET ");
}

TEST_F(ContentUploadTest, AnUploadThatReplacesAnythingHasNoCondition) {
    ScriptedServer server({AnswerOf("folders/status-204")});
    Source source(FileText);
    EXPECT_EQ(
        session->Upload(server.Url(FilePath), source, FileText.size(), UploadCondition::Any, ContentVersion()).outcome,
        UploadOutcome::Stored);
    server.Stop();
    for (const char* header : {"if-match", "if-none-match", "if-unmodified-since"}) {
        EXPECT_FALSE(server.Requests().first().headers.contains(header)) << header;
    }
}

TEST_F(ContentUploadTest, TheDateOfTheFileIsTold) {
    ScriptedServer server({AnswerOf("folders/status-201"), AnswerOf("folders/status-201")});
    Source source(FileText);
    Upload(server, source);
    source.modified = QDateTime(QDate(2026, 11, 20), QTime(10, 15, 30, 999), Qt::UTC);
    Upload(server, source);
    server.Stop();
    EXPECT_FALSE(server.Requests().first().headers.contains("x-oc-mtime"));
    EXPECT_EQ(server.Requests().last().headers.value("x-oc-mtime"), "1795169730");
}

TEST_F(ContentUploadTest, AServerThatTakesTheExecutableBitIsToldNothingElse) {
    const ScriptedServer::Step taken =
        ScriptedServer::Answer("HTTP/1.1 201 Created\r\nContent-Length: 0\r\nx-ovs-executable: accepted\r\n\r\n");
    ScriptedServer server({taken, taken, AnswerOf("folders/status-201"), AnswerOf("folders/status-201")});
    Source source(FileText);
    for (const std::optional<bool> bit :
         {std::optional<bool>(true), std::optional<bool>(false), std::optional<bool>()}) {
        source.isExecutable = bit;
        EXPECT_EQ(Upload(server, source), UploadOutcome::Stored);
    }
    // Most servers know no such header, and have a new file that is not executable.
    source.isExecutable = false;
    EXPECT_EQ(Upload(server, source), UploadOutcome::Stored);
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    EXPECT_EQ(server.Requests()[0].headers.value("x-ovs-executable"), "T");
    EXPECT_EQ(server.Requests()[1].headers.value("x-ovs-executable"), "F");
    EXPECT_FALSE(server.Requests()[2].headers.contains("x-ovs-executable"));
}

TEST_F(ContentUploadTest, AnotherServerIsToldTheExecutableBitAsAPropertyAndMayRefuseIt) {
    for (const char* answer : {"folders/status-207", "statuses/forbidden-403", "folders/status-405"}) {
        ScriptedServer server({AnswerOf("folders/status-204"), AnswerOf(answer)});
        Source source(FileText);
        source.isExecutable = true;
        EXPECT_EQ(Upload(server, source), UploadOutcome::Stored) << answer;
        server.Stop();
        ASSERT_TRUE(server.SawItsScript());
        EXPECT_EQ(server.Requests().last().method, "PROPPATCH");
        EXPECT_THAT(server.Requests().last().body.toStdString(), HasSubstr("<A:executable>T</A:executable>"));
    }
}

TEST_F(ContentUploadTest, AnotherServerIsToldWhenAnExecutableFileIsReplacedByOneThatIsNot) {
    ScriptedServer server({AnswerOf("folders/status-204"), AnswerOf("folders/status-207")});
    Source source(FileText);
    source.isExecutable = false;
    source.replacesExecutable = true;
    EXPECT_EQ(Upload(server, source), UploadOutcome::Stored);
    server.Stop();
    ASSERT_TRUE(server.SawItsScript());
    EXPECT_THAT(server.Requests().last().body.toStdString(), HasSubstr("<A:executable>F</A:executable>"));
}

TEST_F(ContentUploadTest, WhatWasNotStoredIsNotMadeExecutable) {
    ScriptedServer server({AnswerOf("folders/status-412")});
    Source source(FileText);
    source.isExecutable = true;
    EXPECT_EQ(Upload(server, source), UploadOutcome::Refused);
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

/// A source with a date and an MD5, and what a server is told of it.
struct DatedSource : Source {
    DatedSource() : Source(FileText) {
        modified = QDateTime(QDate(2020, 9, 13), QTime(12, 26, 40, 999), Qt::UTC);
        md5 = QStringLiteral("9e107d9d372bb6826bd81d3542a419d6");
    }
};
const char* const KeptDate = ">9e107d9d372bb6826bd81d3542a419d6 Sun, 13 Sep 2020 12:26:40 GMT</";

TEST_F(ContentUploadTest, AServerThatTakesTheDateWithTheContentIsToldNothingElse) {
    ScriptedServer server(
        {ScriptedServer::Answer("HTTP/1.1 201 Created\r\nContent-Length: 0\r\nX-OC-MTime: accepted\r\n\r\n")});
    DatedSource source;
    EXPECT_EQ(Upload(server, source), UploadOutcome::Stored);
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(ContentUploadTest, AnotherServerIsToldWhichContentHasTheDateUntilItRefusesSuchProperties) {
    const ScriptedServer::Step stored = AnswerOf("folders/status-204");
    for (const char* refusal : {"contents/property-forbidden-207", "statuses/forbidden-403", "folders/status-405"}) {
        ScriptedServer server({stored, AnswerOf("contents/property-set-207"), stored,
                               AnswerOf("statuses/not-found-404"), stored, AnswerOf(refusal), stored});
        session = std::make_unique<ContentConnection>(settings, QAuthenticator());
        DatedSource source;
        for (int i = 0; i < 4; ++i) {
            EXPECT_EQ(Upload(server, source), UploadOutcome::Stored) << refusal;
        }
        server.Stop();
        ASSERT_TRUE(server.SawItsScript()) << refusal;
        for (const int i : {1, 3, 5}) {
            EXPECT_EQ(server.Requests()[i].method, "PROPPATCH");
            EXPECT_THAT(server.Requests()[i].body.toStdString(), HasSubstr(KeptDate));
        }
    }
}

TEST_F(ContentUploadTest, NoRequestIsSpentOnADateThatIsAsGoodAsTheServersOrOnContentThatNobodyCounted) {
    ScriptedServer server({AnswerOf("folders/status-204"), AnswerOf("folders/status-204")});
    DatedSource source;
    source.modified = QDateTime::currentDateTimeUtc().addSecs(-30);
    EXPECT_EQ(Upload(server, source), UploadOutcome::Stored);
    source = DatedSource();
    source.md5.clear();
    EXPECT_EQ(Upload(server, source), UploadOutcome::Stored);
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(ContentConnectionTest, SeveralTransfersShareTheBandwidth) {
    const int size = 64 * 1024;
    settings.bandwidth = std::make_shared<Bandwidth>(4 * size);
    const QByteArray content = Bytes(size);
    const QByteArray answer = "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(size) + "\r\n\r\n" + content;
    const ScriptedServer first({ScriptedServer::Answer(answer), AnswerOf("folders/status-201")});
    const ScriptedServer second({ScriptedServer::Answer(answer), AnswerOf("folders/status-201")});
    const auto begin = std::chrono::steady_clock::now();
    const auto transfer = [&](const ScriptedServer& server) {
        ContentConnection session(settings, QAuthenticator());
        Sink sink;
        session.Download(server.Url(FilePath), sink);
        EXPECT_EQ(sink.content, content);
        Source source(content);
        EXPECT_EQ(session.Upload(server.Url(FilePath), source, size, UploadCondition::New, ContentVersion()).outcome,
                  UploadOutcome::Stored);
    };
    std::thread other([&] { transfer(second); });
    transfer(first);
    other.join();
    // Each way two files at a rate of four a second, of which the first pieces, and what a short delay allows, are
    // free.
    EXPECT_GT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(350));
}

TEST_F(ContentConnectionTest, TheExecutableBitIsWhatTheServerSays) {
    const std::pair<const char*, std::optional<bool>> all[] = {{"x-ovs-executable: T\r\n", true},
                                                               {"x-ovs-executable: F\r\n", false},
                                                               {"x-ovs-executable: x\r\n", {}},
                                                               {"", {}}};
    for (const auto& [header, expected] : all) {
        ScriptedServer server(
            {ScriptedServer::Answer(QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n") + header + "\r\n")});
        ContentConnection session(settings, QAuthenticator());
        Sink sink;
        EXPECT_EQ(session.Download(server.Url(FilePath), sink).isExecutable, expected) << header;
    }
}

TEST_F(ContentUploadTest, AServerMayThinkLongerAboutWhatItGotThanItMayBeSilentElse) {
    settings.silenceLimit = std::chrono::milliseconds(100);
    settings.answerLimit = std::chrono::seconds(30);
    Restart(QAuthenticator());
    Step step;
    step.answer = [](const ScriptedServer::Request&) {
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        return FixtureAnswer(QStringLiteral("folders/status-201")).Bytes();
    };
    ScriptedServer server({step});
    Source source(FileText);
    EXPECT_EQ(Upload(server, source), UploadOutcome::Stored);
}

TEST_F(ContentUploadTest, AServerThatNeverAnswersIsGivenUp) {
    settings.silenceLimit = std::chrono::milliseconds(100);
    settings.answerLimit = std::chrono::milliseconds(400);
    Restart(QAuthenticator());
    ScriptedServer server({ScriptedServer::Answer(QByteArray(), Ending::Stall)});
    Source source(FileText);
    EXPECT_THAT(ErrorOfUpload<TransactionError>(server, source, FileText.size()),
                HasSubstr("nothing was received or sent for 0.4 s"));
}

TEST_F(ContentUploadTest, AnAnswerThatHasBegunIsNotThoughtAboutAnyLonger) {
    settings.silenceLimit = std::chrono::milliseconds(300);
    settings.answerLimit = std::chrono::seconds(30);
    Restart(QAuthenticator());
    ScriptedServer server({ScriptedServer::Answer("HTTP/1.1 201 Created\r\n", Ending::Stall)});
    Source source(FileText);
    EXPECT_THAT(ErrorOfUpload<TransactionError>(server, source, FileText.size()),
                HasSubstr("nothing was received or sent for 0.3 s"));
}

TEST_F(ContentUploadTest, AServerThatSaysEarlyThatItGoesOnMayStillThink) {
    settings.silenceLimit = std::chrono::milliseconds(100);
    settings.answerLimit = std::chrono::milliseconds(400);
    Restart(QAuthenticator());
    ScriptedServer server({ScriptedServer::Answer("HTTP/1.1 102 Processing\r\n\r\n", Ending::Stall)});
    Source source(FileText);
    EXPECT_THAT(ErrorOfUpload<TransactionError>(server, source, FileText.size()),
                HasSubstr("nothing was received or sent for 0.4 s"));
}

TEST_F(ContentUploadTest, AnAnswerForSeveralResourcesIsARefusal) {
    ScriptedServer server({AnswerOf("contents/property-forbidden-207")});
    Source source(FileText);
    try {
        Upload(server, source);
        FAIL();
    } catch (const HttpException& error) {
        EXPECT_EQ(error.StatusCode(), 424);
    }
}

TEST_F(ContentUploadTest, OnlyThreeStatusesMeanStored) {
    for (const char* answer : {"folders/status-200", "folders/status-201", "folders/status-204"}) {
        ScriptedServer server({AnswerOf(answer)});
        Source source(FileText);
        EXPECT_EQ(Upload(server, source), UploadOutcome::Stored) << answer;
    }
    for (const char* answer : {"folders/status-202",
                               "folders/status-203",
                               "folders/status-206",
                               "folders/status-207",
                               "folders/status-300",
                               "folders/status-301",
                               "folders/status-302",
                               "folders/status-303",
                               "folders/status-304",
                               "folders/status-307",
                               "folders/status-308",
                               "statuses/bad-request-400",
                               "statuses/unauthorized-basic-401",
                               "statuses/forbidden-403",
                               "statuses/not-found-404",
                               "folders/status-405",
                               "folders/status-409",
                               "statuses/locked-423",
                               "statuses/broken-500",
                               "folders/status-507"}) {
        SCOPED_TRACE(answer);
        ScriptedServer server({AnswerOf(answer)});
        Source source(FileText);
        EXPECT_THAT(ErrorOfUpload<HttpException>(server, source, FileText.size()),
                    AllOf(HasSubstr("PUT http://127.0.0.1"), HasSubstr("the service answered with")));
        server.Stop();
        EXPECT_TRUE(server.SawItsScript());
    }
}

TEST_F(ContentUploadTest, AnAnswerThatIsCutOffIsAnError) {
    ScriptedServer server({AnswerOf("bad/nothing", Ending::Close)});
    Source source(FileText);
    EXPECT_THAT(ErrorOfUpload<TransactionError>(server, source, FileText.size()), HasSubstr("Empty reply"));
}

TEST_F(ContentUploadTest, ASourceThatEndsEarlyBreaksTheUploadOff) {
    for (const int missing : {1, 400 * 1024}) {
        ScriptedServer server({AnswerOf("folders/status-201")});
        Source source(Bytes(400 * 1024));
        EXPECT_THAT(ErrorOfUpload<TransactionError>(server, source, source.content.size() + missing),
                    HasSubstr("the content ends after 409600 of"));
        server.Stop();
        ExpectNothingWhole(server);
    }
}

TEST_F(ContentUploadTest, ASourceThatGrewBreaksTheUploadOff) {
    for (const int size : {1, 400 * 1024}) {
        ScriptedServer server({AnswerOf("folders/status-201")});
        Source source(Bytes(size + 1));
        EXPECT_THAT(ErrorOfUpload<TransactionError>(server, source, size), HasSubstr("longer than the announced"));
        server.Stop();
        ExpectNothingWhole(server);
    }
}

TEST_F(ContentUploadTest, NothingIsSentOfASourceThatWasToBeEmpty) {
    ScriptedServer server({});
    Source source("a");
    EXPECT_THAT(ErrorOfUpload<TransactionError>(server, source, 0), HasSubstr("longer than the announced 0 bytes"));
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(ContentUploadTest, WhatTheSourceThrowsBreaksTheUploadOffAndPassesThrough) {
    ScriptedServer server({AnswerOf("folders/status-201")});
    Source source(Bytes(1024 * 1024));
    source.onRead = [](int at) {
        if (at > 0) {
            throw DiskFull("the disk is gone");
        }
    };
    EXPECT_THROW(Upload(server, source), DiskFull);
    source.onRead = nullptr;
    EXPECT_EQ(Upload(server, source), UploadOutcome::Stored);
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
    EXPECT_EQ(server.Requests().first().connection, 2);
}

TEST_F(ContentUploadTest, ASlowSourceIsNotTheSilenceOfTheServer) {
    settings.silenceLimit = std::chrono::seconds(1);
    Restart(QAuthenticator());
    Step step;
    step.answer = [](const ScriptedServer::Request&) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        return FixtureAnswer(QStringLiteral("folders/status-201")).Bytes();
    };
    ScriptedServer server({step});
    Source source(FileText);
    source.onRead = [](int at) {
        if (at == 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1100));
        }
    };
    EXPECT_EQ(Upload(server, source), UploadOutcome::Stored);
}

TEST_F(ContentUploadTest, ASuccessBeforeAllWasSentIsNone) {
    ScriptedServer server({AtOnce(AnswerOf("folders/status-201", Ending::Close))});
    Source source(Bytes(LargeSize));
    EXPECT_NE(ErrorOfUpload<TransactionError>(server, source, LargeSize), "");
}

TEST_F(ContentUploadTest, CancelBreaksTheUploadOff) {
    ScriptedServer server({AnswerOf("folders/status-201")});
    Source source(Bytes(LargeSize));
    source.onRead = [&](int at) {
        if (at > 0) {
            session->Cancel();
        }
    };
    EXPECT_THAT(ErrorOfUpload<TransactionError>(server, source, LargeSize), HasSubstr("it was cancelled"));
    server.Stop();
    ExpectNothingWhole(server);
}

TEST_F(ContentUploadTest, AnotherThreadCancelsAnUploadThatWaits) {
    ScriptedServer server({AtOnce(ScriptedServer::Answer(QByteArray(), Ending::Stall))});
    Source source(FileText);
    std::promise<void> begun;
    std::thread canceller([&] {
        begun.get_future().wait();
        session->Cancel();
    });
    source.onRead = [&begun, isFirst = true](int) mutable {
        if (isFirst) {
            begun.set_value();
        }
        isFirst = false;
    };
    const std::string error = ErrorOfUpload<TransactionError>(server, source, FileText.size());
    canceller.join();
    EXPECT_THAT(error, HasSubstr("it was cancelled"));
}

class ContentLockTest : public ContentUploadTest {
protected:
    ContentLockTest() {
        known.entityTag = "\"a-7\"";
        known.lastModified = QDateTime(QDate(2026, 11, 20), QTime(10, 15, 30), Qt::UTC);
    }

    LockOutcome Lock(const ScriptedServer& server) {
        return session->Lock(server.Url(FilePath), known.entityTag, QStringLiteral("ovsync <1>"),
                             std::chrono::seconds(300));
    }

    ContentVersion known;
};

TEST_F(ContentLockTest, NobodyElseChangesAFileBetweenLockAndUnlock) {
    ScriptedServer server({AnswerOf("locks/locked-200"), AnswerOf("folders/status-204"),
                           AnswerOf("contents/property-set-207"), AnswerOf("contents/property-set-207"),
                           AnswerOf("folders/status-204"), AnswerOf("folders/status-204")});
    DatedSource source;
    source.isExecutable = true;
    EXPECT_EQ(Lock(server), LockOutcome::Locked);
    EXPECT_EQ(
        session->Upload(server.Url(FilePath), source, source.content.size(), UploadCondition::Unchanged, known).outcome,
        UploadOutcome::Stored);
    EXPECT_TRUE(session->Unlock());
    EXPECT_TRUE(session->Unlock());
    source.isExecutable.reset();
    source.modified = QDateTime();
    EXPECT_EQ(Upload(server, source), UploadOutcome::Stored);
    server.Stop();
    ASSERT_TRUE(server.SawItsScript());
    const ScriptedServer::Request& lock = server.Requests()[0];
    EXPECT_EQ(lock.method, "LOCK");
    EXPECT_EQ(lock.target, FilePath.toLatin1());
    EXPECT_EQ(lock.headers.value("depth"), "0");
    EXPECT_EQ(lock.headers.value("timeout"), "Second-300");
    EXPECT_EQ(lock.headers.value("if"), "([\"a-7\"])");
    EXPECT_FALSE(lock.headers.contains("if-match"));
    EXPECT_THAT(lock.body.toStdString(),
                AllOf(HasSubstr("<D:exclusive/>"), HasSubstr("<D:owner>ovsync &lt;1&gt;</D:owner>")));
    for (const int i : {1, 2, 3}) {
        EXPECT_EQ(server.Requests()[i].headers.value("if"), "(<opaquelocktoken:c6ac8583>)") << i;
    }
    const ScriptedServer::Request& unlock = server.Requests()[4];
    EXPECT_EQ(unlock.method, "UNLOCK");
    EXPECT_EQ(unlock.target, FilePath.toLatin1());
    EXPECT_EQ(unlock.headers.value("lock-token"), "<opaquelocktoken:c6ac8583>");
    EXPECT_FALSE(server.Requests()[5].headers.contains("if"));
}

TEST_F(ContentLockTest, AnEmptyFileThatAServerMadeToLockItGoesAgainAndNoOther) {
    ScriptedServer server({AnswerOf("locks/made-201"), HeadOf("contents/no-bytes-200"), AnswerOf("folders/status-204"),
                           AnswerOf("statuses/bad-request-400"), AnswerOf("locks/made-201"),
                           HeadOf("contents/file-200")});
    EXPECT_EQ(Lock(server), LockOutcome::Gone);
    EXPECT_TRUE(session->Unlock());
    EXPECT_EQ(Lock(server), LockOutcome::Locked);
    server.Stop();
    ASSERT_TRUE(server.SawItsScript());
    EXPECT_EQ(server.Requests()[2].method, "DELETE");
    EXPECT_EQ(server.Requests()[2].headers.value("if"), "(<opaquelocktoken:c6ac8583>)");
    EXPECT_EQ(server.Requests()[3].method, "UNLOCK");
}

TEST_F(ContentLockTest, AServerWithoutLocksIsAskedOnce) {
    for (const char* answer : {"folders/status-405", "locks/without-token-200"}) {
        ScriptedServer server({AnswerOf(answer), AnswerOf("folders/status-201")});
        Restart(QAuthenticator());
        EXPECT_EQ(Lock(server), LockOutcome::NotLocked) << answer;
        EXPECT_TRUE(session->Unlock());
        EXPECT_EQ(Lock(server), LockOutcome::NotLocked);
        Source source(FileText);
        EXPECT_EQ(Upload(server, source), UploadOutcome::Stored);
        server.Stop();
        ASSERT_TRUE(server.SawItsScript()) << answer;
        EXPECT_FALSE(server.Requests()[1].headers.contains("if"));
    }
}

TEST_F(ContentLockTest, WhatMayBeOtherwiseForTheNextFileIsAskedAgain) {
    for (const char* answer : {"statuses/not-found-404", "statuses/broken-500", "folders/status-412",
                               "folders/status-409", "statuses/forbidden-403", "statuses/bad-request-400"}) {
        ScriptedServer server({AnswerOf(answer), AnswerOf("locks/locked-200")});
        Restart(QAuthenticator());
        EXPECT_EQ(Lock(server), LockOutcome::NotLocked) << answer;
        // The server may have failed only after it locked the file.
        EXPECT_EQ(session->Unlock(), std::string(answer) != "statuses/broken-500") << answer;
        known.entityTag.clear();
        EXPECT_EQ(Lock(server), LockOutcome::Locked);
        server.Stop();
        ASSERT_TRUE(server.SawItsScript()) << answer;
        EXPECT_FALSE(server.Requests()[1].headers.contains("if"));
    }
}

TEST_F(ContentLockTest, WhatSomebodyElseHasLockedIsAnError) {
    ScriptedServer server({AnswerOf("statuses/locked-423"), AnswerOf("locks/locked-200")});
    EXPECT_THAT(ErrorOf<HttpException>([&] { (void)Lock(server); }),
                AllOf(HasSubstr("LOCK http://"), HasSubstr("423")));
    EXPECT_TRUE(session->Unlock());
    EXPECT_EQ(Lock(server), LockOutcome::Locked);
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(ContentLockTest, ALockEndsAlsoAfterCancelAndWhoCannotEndItSaysSo) {
    ScriptedServer server({AnswerOf("locks/locked-200", Ending::Close), AnswerOf("folders/status-204")});
    EXPECT_EQ(Lock(server), LockOutcome::Locked);
    session->Cancel();
    EXPECT_TRUE(session->Unlock());
    server.Stop();
    ASSERT_TRUE(server.SawItsScript());
    EXPECT_EQ(server.Requests()[1].method, "UNLOCK");

    ScriptedServer silent(
        {AnswerOf("locks/locked-200", Ending::Close), ScriptedServer::Answer(QByteArray(), Ending::Stall)});
    Restart(QAuthenticator());
    EXPECT_EQ(Lock(silent), LockOutcome::Locked);
    session->Cancel();
    EXPECT_FALSE(session->Unlock());
}

TEST_F(ContentLockTest, AServerThatAnswersNoLockIsAskedForNoMoreAndMayHaveMadeIt) {
    ScriptedServer server({ScriptedServer::Answer(QByteArray(), Ending::Close), AnswerOf("folders/status-201")});
    EXPECT_EQ(Lock(server), LockOutcome::NotLocked);
    EXPECT_FALSE(session->Unlock());
    EXPECT_EQ(Lock(server), LockOutcome::NotLocked);
    EXPECT_TRUE(session->Unlock());
    Source source(FileText);
    EXPECT_EQ(Upload(server, source), UploadOutcome::Stored);
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(ContentLockTest, WhoDoesWithoutLocksAsksForNone) {
    ScriptedServer server({});
    session->DoWithoutLocks();
    EXPECT_EQ(Lock(server), LockOutcome::NotLocked);
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(ContentLockTest, ALockIsOverOnlyWhenTheServerSaysSo) {
    for (const char* answer : {"statuses/broken-500", "statuses/forbidden-403", "statuses/unauthorized-basic-401"}) {
        ScriptedServer server(
            {AnswerOf("locks/locked-200"), AnswerOf(answer), AnswerOf("locks/of-folder-207"), AnswerOf(answer)});
        Restart(QAuthenticator());
        EXPECT_EQ(Lock(server), LockOutcome::Locked);
        EXPECT_FALSE(session->Unlock()) << answer;
        EXPECT_THAT(ErrorOf<HttpException>([&] {
                        session->Release(server.Url(QStringLiteral("/Projects/A")), QStringLiteral("ovsync 1"));
                    }),
                    HasSubstr("UNLOCK http://"))
            << answer;
    }
}

TEST_F(ContentLockTest, ReleaseEndsTheLocksOfItsOwnerAloneAtTheServerThatWasAsked) {
    ScriptedServer server(
        {AnswerOf("locks/of-folder-207"), AnswerOf("folders/status-204"), AnswerOf("statuses/bad-request-400")});
    session->Release(server.Url(QStringLiteral("/Projects/A")), QStringLiteral("ovsync 1"));
    server.Stop();
    ASSERT_TRUE(server.SawItsScript());
    EXPECT_EQ(server.Requests()[0].method, "PROPFIND");
    EXPECT_EQ(server.Requests()[0].target, "/Projects/A/");
    EXPECT_EQ(server.Requests()[0].headers.value("depth"), "1");
    EXPECT_EQ(server.Requests()[1].method, "UNLOCK");
    EXPECT_EQ(server.Requests()[1].target, FilePath.toLatin1());
    EXPECT_EQ(server.Requests()[1].headers.value("lock-token"), "<opaquelocktoken:1>");
    EXPECT_EQ(server.Requests()[2].target, "/Projects/A/theirs.txt");
    EXPECT_EQ(server.Requests()[2].headers.value("lock-token"), "<opaquelocktoken:3>");
}

TEST_F(ContentLockTest, WhereNobodyTellsOfLocksThereAreNoneAndAFailureIsAnError) {
    for (const char* answer : {"folders/status-405", "statuses/not-found-404", "statuses/forbidden-403"}) {
        ScriptedServer server({AnswerOf(answer)});
        session->Release(server.Url(QStringLiteral("/Projects/A/")), QStringLiteral("ovsync 1"));
        server.Stop();
        EXPECT_TRUE(server.SawItsScript()) << answer;
    }
    ScriptedServer server({AnswerOf("statuses/broken-500")});
    EXPECT_THAT(ErrorOf<HttpException>(
                    [&] { session->Release(server.Url(QStringLiteral("/Projects/A/")), QStringLiteral("ovsync 1")); }),
                HasSubstr("500"));
}

}  // namespace
}  // namespace content
}  // namespace ovsync
