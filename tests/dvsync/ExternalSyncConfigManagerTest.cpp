#include "dvsync/ExternalSyncConfigManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDomDocument>
#include <QEventLoop>
#include <QFile>
#include <QMetaMethod>
#include <QNetworkAccessManager>
#include <QTimer>
#include <algorithm>
#include <functional>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/core/SyncException.h"
#include "tests/dvsync/LogRecorder.h"
#include "tests/fakes/ScriptedServer.h"
#include "tests/fakes/SelfSignedCertificate.h"
#include "tests/fakes/Soon.h"
#include "tests/fakes/Text.h"

namespace sync {
namespace dv {
namespace dvsync {

class ExternalSyncConfigManagerAccess {
public:
    static std::vector<const void*> Members(const ExternalSyncConfigManager& manager) {
        return {&manager.eventLoop, &manager.config, &manager.responseText, &manager.http,
                &manager.networkAccessManagerFactory};
    }
    static const QString& ResponseText(const ExternalSyncConfigManager& manager) { return manager.responseText; }
    static ExternalSyncConfig& Config(ExternalSyncConfigManager& manager) { return manager.config; }
    static int RunEventLoop(ExternalSyncConfigManager& manager) { return manager.eventLoop.exec(); }
    static void ReplyFinished(ExternalSyncConfigManager& manager, QNetworkReply* reply) {
        manager._ReplyFinished(reply);
    }
    static void SslErrors(ExternalSyncConfigManager& manager, QNetworkReply* reply) {
        manager._SslErrors(reply, QList<QSslError>());
    }
    static void ParseVersion(ExternalSyncConfigManager& manager, const QDomDocument& document) {
        manager._ParseVersionFromResponse(document);
    }
    static void ParseSyncFrequency(ExternalSyncConfigManager& manager, const QDomDocument& document) {
        manager._ParseSyncFrequencyFromResponse(document);
    }
};

}  // namespace dvsync
}  // namespace dv
}  // namespace sync

namespace {

using sync::dv::dvsync::ExternalSyncConfig;
using sync::dv::dvsync::ExternalSyncConfigManager;
using testing::IsEmpty;
using tests::DebugLevel;
using tests::ErrorLevel;
using tests::LogRecord;
using tests::ScriptedServer;
using tests::Text;
using ConfigAccess = sync::dv::dvsync::ExternalSyncConfigManagerAccess;
using Ending = ScriptedServer::Ending;

class FakeDrovaneHttp : public sync::interf::dv::IDrovaneHttp {
public:
    std::shared_ptr<QUrl> GetServiceUrl() override { throw std::logic_error("not to be asked for"); }
    std::shared_ptr<QUrl> GetSyncConfigUrl() override {
        if (onAsked) {
            onAsked();
        }
        return url;
    }

    std::shared_ptr<QUrl> url;
    std::function<void()> onAsked;
};

class FakeNetworkAccessManagerFactory : public sync::interf::factory::INetworkAccessManagerFactory {
public:
    std::shared_ptr<QNetworkAccessManager> CreateNetworkAccessManager() override {
        auto manager = make ? make() : std::make_shared<QNetworkAccessManager>();
        made.push_back(manager);
        return manager;
    }

    std::function<std::shared_ptr<QNetworkAccessManager>()> make;
    std::vector<std::weak_ptr<QNetworkAccessManager>> made;
};

QByteArray Document(const char* name) {
    QFile file(Text(DVSYNC_FIXTURES "/sync-config/") + Text(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    return file.readAll();
}

ScriptedServer::Step AnswerOf(const QByteArray& body, const char* statusLine = "HTTP/1.1 200 OK") {
    return ScriptedServer::Answer(QByteArray(statusLine) + "\r\nContent-Type: text/xml\r\nContent-Length: " +
                                  QByteArray::number(body.size()) + "\r\n\r\n" + body);
}

/// Waits for no reply longer than a moment.
class ImpatientManager : public QNetworkAccessManager {
protected:
    QNetworkReply* createRequest(Operation operation, const QNetworkRequest& request, QIODevice* body) override {
        QNetworkReply* const reply = QNetworkAccessManager::createRequest(operation, request, body);
        QTimer::singleShot(100, reply, SLOT(abort()));
        return reply;
    }
};

class ExternalSyncConfigManagerTest : public testing::Test {
protected:
    ExternalSyncConfig Fetch(const QUrl& url) {
        _http->url = std::make_shared<QUrl>(url);
        return _manager.GetExternalSyncConfig();
    }

    /// What comes out of one fetch that `server` answers.
    ExternalSyncConfig FetchFrom(ScriptedServer& server) {
        const ExternalSyncConfig config = Fetch(server.Url(Text("/sync-config.xml")));
        server.Stop();
        EXPECT_TRUE(server.SawItsScript());
        return config;
    }

    ExternalSyncConfig FetchBody(const QByteArray& body) {
        ScriptedServer server({AnswerOf(body)});
        return FetchFrom(server);
    }

    static void ExpectWhole(const ExternalSyncConfig& config) {
        EXPECT_EQ(config.mostCurrentVersion, Text("KQ51_1001_WIN"));
        EXPECT_EQ(config.installerUrl, Text("https://service.test/setup.exe"));
        EXPECT_EQ(config.syncFrequency, 60);
    }

    static void ExpectDefaults(const ExternalSyncConfig& config) {
        EXPECT_EQ(config.mostCurrentVersion, Text("0.0.0.0"));
        EXPECT_EQ(config.installerUrl, Text(""));
        EXPECT_EQ(config.syncFrequency, 180);
    }

    void ExpectOneError(const std::string& text) const {
        ASSERT_EQ(_log.Records().size(), 1U);
        EXPECT_EQ(_log.Records().front().level, ErrorLevel);
        EXPECT_EQ(_log.Records().front().text, text);
    }

    void ExpectNetworkError(QNetworkReply::NetworkError error) const {
        ExpectOneError("Unable to retrieve sync configuration from remote server.  QNetworkReply::NetworkError code: " +
                       std::to_string(error));
    }

    int _argumentCount = 1;
    char _programName[5] = "test";
    char* _arguments[2] = {_programName, nullptr};
    const QCoreApplication _application{_argumentCount, _arguments};
    const std::shared_ptr<FakeDrovaneHttp> _http = std::make_shared<FakeDrovaneHttp>();
    const std::shared_ptr<FakeNetworkAccessManagerFactory> _factory =
        std::make_shared<FakeNetworkAccessManagerFactory>();
    ExternalSyncConfigManager _manager{_http, _factory};
    const tests::LogRecorder _log{LOG4CPLUS_TEXT("config")};
};

// --- The class

TEST_F(ExternalSyncConfigManagerTest, TheMetaObjectHasTwoPrivateSlotsAndNothingElse) {
    const QMetaObject& meta = ExternalSyncConfigManager::staticMetaObject;
    EXPECT_STREQ(meta.className(), "sync::dv::dvsync::ExternalSyncConfigManager");
    EXPECT_STREQ(meta.superClass()->className(), "sync::interf::IExternalSyncConfigManager");
    ASSERT_EQ(meta.methodCount() - meta.methodOffset(), 2);
    EXPECT_EQ(meta.propertyCount(), meta.propertyOffset());
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        EXPECT_EQ(meta.method(i).methodType(), QMetaMethod::Slot);
        EXPECT_EQ(meta.method(i).access(), QMetaMethod::Private);
    }
    EXPECT_EQ(meta.indexOfSlot("_SslErrors(QNetworkReply*,QList<QSslError>)"), meta.methodOffset());
    EXPECT_EQ(meta.indexOfSlot("_ReplyFinished(QNetworkReply*)"), meta.methodOffset() + 1);
}

TEST_F(ExternalSyncConfigManagerTest, TheMembersLieInTheirOrder) {
    const std::vector<const void*> members = ConfigAccess::Members(_manager);
    EXPECT_TRUE(std::is_sorted(members.begin(), members.end(), std::less<>()));
}

TEST_F(ExternalSyncConfigManagerTest, NothingIsFetchedAtConstruction) {
    _http->onAsked = [] { FAIL() << "asked for the URL"; };
    const ExternalSyncConfigManager manager(_http, _factory);
    EXPECT_THAT(_factory->made, IsEmpty());
}

// --- The fetch

TEST_F(ExternalSyncConfigManagerTest, AFetchIsOneGetOfTheUrlThroughAManagerMadeForIt) {
    ScriptedServer server({AnswerOf(Document("whole.xml"))});
    ExpectWhole(FetchFrom(server));
    EXPECT_EQ(server.Requests().first().method, "GET");
    EXPECT_EQ(server.Requests().first().target, "/sync-config.xml");
    ASSERT_EQ(_factory->made.size(), 1U);
    EXPECT_TRUE(_factory->made.front().expired());
}

// Sends a bare GET of `url` through `manager` and waits for its end.
QNetworkReply* Get(QNetworkAccessManager& manager, const QUrl& url) {
    QNetworkReply* const reply = manager.get(QNetworkRequest(url));
    QEventLoop loop;
    QObject::connect(reply, SIGNAL(finished()), &loop, SLOT(quit()));
    loop.exec();
    return reply;
}

TEST_F(ExternalSyncConfigManagerTest, AFetchSendsTheHeadersOfABareRequestAndNoOther) {
    ScriptedServer server({AnswerOf(Document("whole.xml")), AnswerOf(Document("whole.xml"))});
    ExpectWhole(Fetch(server.Url(Text("/"))));
    QNetworkAccessManager manager;
    Get(manager, server.Url(Text("/")));
    server.Stop();
    ASSERT_TRUE(server.SawItsScript());
    EXPECT_EQ(server.Requests().at(0).headers, server.Requests().at(1).headers);
    EXPECT_TRUE(server.Requests().at(0).body.isEmpty());
}

TEST_F(ExternalSyncConfigManagerTest, ARedirectIsAnAnswerAndIsNotFollowed) {
    ScriptedServer server({AnswerOf(Document("whole.xml"), "HTTP/1.1 302 Found\r\nLocation: /elsewhere")});
    ExpectWhole(FetchFrom(server));
}

TEST_F(ExternalSyncConfigManagerTest, EveryCallFetchesAnew) {
    ScriptedServer server({AnswerOf(Document("whole.xml")), AnswerOf(Document("frequency-15.xml"))});
    const QUrl url = server.Url(Text("/"));
    EXPECT_EQ(Fetch(url).syncFrequency, 60);
    EXPECT_EQ(Fetch(url).syncFrequency, 15);
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(ExternalSyncConfigManagerTest, AFailureAfterASuccessGivesTheDefaultsAndTheNextSuccessIsRead) {
    ScriptedServer server(
        {AnswerOf(Document("whole.xml")), AnswerOf("gone", "HTTP/1.1 404 Not Found"), AnswerOf(Document("whole.xml"))});
    const QUrl url = server.Url(Text("/"));
    ExpectWhole(Fetch(url));
    ExpectDefaults(Fetch(url));
    EXPECT_TRUE(ConfigAccess::ResponseText(_manager).isEmpty());
    ExpectWhole(Fetch(url));
    server.Stop();
    EXPECT_TRUE(server.SawItsScript());
}

TEST_F(ExternalSyncConfigManagerTest, AnAnswerThatTricklesInIsReadWhole) {
    ScriptedServer::Step slow = AnswerOf(Document("whole.xml"));
    slow.millisecondsPerByte = 1;
    ScriptedServer server({slow});
    ExpectWhole(FetchFrom(server));
}

TEST_F(ExternalSyncConfigManagerTest, AnEmptyBodyGivesTheDefaultsAndLogsNothing) {
    ExpectDefaults(FetchBody(QByteArray()));
    EXPECT_THAT(_log.Records(), IsEmpty());
}

TEST_F(ExternalSyncConfigManagerTest, AServerErrorGivesTheDefaultsEvenWithAGoodBody) {
    ScriptedServer server({AnswerOf(Document("whole.xml"), "HTTP/1.1 500 Internal Server Error")});
    ExpectDefaults(FetchFrom(server));
    ExpectNetworkError(QNetworkReply::InternalServerError);
}

TEST_F(ExternalSyncConfigManagerTest, AMissingDocumentGivesTheDefaults) {
    ScriptedServer server({AnswerOf("gone", "HTTP/1.1 404 Not Found")});
    ExpectDefaults(FetchFrom(server));
    ExpectNetworkError(QNetworkReply::ContentNotFoundError);
}

TEST_F(ExternalSyncConfigManagerTest, AnAnswerThatIsCutOffGivesTheDefaults) {
    ScriptedServer server({ScriptedServer::Answer(
        "HTTP/1.1 200 OK\r\nContent-Length: 9999\r\n\r\n" + Document("whole.xml"), Ending::Close)});
    ExpectDefaults(FetchFrom(server));
    ExpectNetworkError(QNetworkReply::RemoteHostClosedError);
}

TEST_F(ExternalSyncConfigManagerTest, AConnectionThatIsResetGivesTheDefaults) {
    ScriptedServer server({ScriptedServer::Answer("HTTP/1.1 200 OK\r\nContent-Length: 9999\r\n\r\n", Ending::Reset)});
    ExpectDefaults(FetchFrom(server));
    ExpectNetworkError(QNetworkReply::RemoteHostClosedError);
}

TEST_F(ExternalSyncConfigManagerTest, ASilentServerIsWaitedForAsLongAsTheManagerOfTheHostDoes) {
    _factory->make = [] { return std::make_shared<ImpatientManager>(); };
    ScriptedServer server({ScriptedServer::Answer(QByteArray(), Ending::Stall)});
    ExpectDefaults(FetchFrom(server));
    ExpectNetworkError(QNetworkReply::OperationCanceledError);
}

TEST_F(ExternalSyncConfigManagerTest, AServerThatIsNotThereGivesTheDefaults) {
    ScriptedServer server({});
    const QUrl url = server.Url(Text("/"));
    server.Stop();
    ExpectDefaults(Fetch(url));
    ExpectNetworkError(QNetworkReply::ConnectionRefusedError);
}

TEST_F(ExternalSyncConfigManagerTest, NoUrlGivesTheDefaults) {
    ExpectDefaults(_manager.GetExternalSyncConfig());
    ExpectNetworkError(QNetworkReply::ProtocolUnknownError);
}

/// A fixture whose tests have a server with TLS.
template <typename Fixture>
class OverTls : public Fixture {
protected:
    void SetUp() override {
#ifdef _WIN32
        GTEST_SKIP() << "Qt's server has the TLS of Windows, which under Wine takes no key that comes from a file";
#endif
    }
};

using ExternalSyncConfigOverTlsTest = OverTls<ExternalSyncConfigManagerTest>;

TEST_F(ExternalSyncConfigOverTlsTest, ACertificateThatNobodyVouchesForIsAccepted) {
    const tests::SelfSignedCertificate certificate;
    ScriptedServer server({AnswerOf(Document("whole.xml"))}, certificate.Files());
    ExpectWhole(FetchFrom(server));
}

TEST_F(ExternalSyncConfigOverTlsTest, ACertificateForAnotherHostIsAccepted) {
    const tests::SelfSignedCertificate certificate;
    ScriptedServer server({AnswerOf(Document("whole.xml"))}, certificate.Files());
    QUrl url = server.Url(Text("/"));
    url.setHost(Text("localhost"));
    ExpectWhole(Fetch(url));
}

TEST_F(ExternalSyncConfigOverTlsTest, AnotherManagerAcceptsNoSuchCertificateForIt) {
    const tests::SelfSignedCertificate certificate;
    // One is asked for; the others are for managers that should not ask.
    ScriptedServer::Step answer = AnswerOf(Document("whole.xml"));
    answer.ending = Ending::Close;
    ScriptedServer server({answer, answer, answer, answer}, certificate.Files());
    const QUrl url = server.Url(Text("/"));
    QNetworkAccessManager manager;
    QNetworkAccessManager meanwhile;
    EXPECT_EQ(Get(manager, url)->error(), QNetworkReply::SslHandshakeFailedError);
    _http->onAsked = [&] { EXPECT_EQ(Get(meanwhile, url)->error(), QNetworkReply::SslHandshakeFailedError); };
    ExpectWhole(Fetch(url));
    EXPECT_EQ(Get(manager, url)->error(), QNetworkReply::SslHandshakeFailedError);
    server.Stop();
    EXPECT_EQ(server.Requests().size(), 1);
}

/// Counts how often its certificate is accepted.
class AcceptingReply : public QNetworkReply {
public:
    void abort() override {}
    void ignoreSslErrors() override { ++accepted; }

    int accepted = 0;

protected:
    qint64 readData(char*, qint64) override { return -1; }
};

TEST_F(ExternalSyncConfigManagerTest, ACertificateIsAcceptedWhateverTheListOfErrorsHolds) {
    AcceptingReply reply;
    ConfigAccess::SslErrors(_manager, &reply);
    EXPECT_EQ(reply.accepted, 1);
}

TEST_F(ExternalSyncConfigManagerTest, WhatACollaboratorThrowsGivesTheDefaultsAndIsLogged) {
    _http->onAsked = [] { throw sync::core::SyncException(Text("no address f\xC3\xBCr %1")); };
    ExpectDefaults(_manager.GetExternalSyncConfig());
    ExpectOneError("no address f\xC3\xBCr %1");
}

TEST_F(ExternalSyncConfigManagerTest, WhateverACollaboratorThrowsGivesTheDefaultsAndIsLogged) {
    _http->onAsked = [] { throw 1; };
    ExpectDefaults(_manager.GetExternalSyncConfig());
    ExpectOneError("Caught unknown, unexpected exception.  Swallowing exception.");
}

// --- What a host may do

/// A reply that is over from the beginning.
class FinishedReply : public QNetworkReply {
public:
    FinishedReply(const QByteArray& body, int announcedLength) : _body(body) {
        setHeader(QNetworkRequest::ContentLengthHeader, announcedLength);
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
        setFinished(true);
    }
    void abort() override {}
    qint64 bytesAvailable() const override { return _body.size() + QNetworkReply::bytesAvailable(); }

protected:
    qint64 readData(char* data, qint64 size) override {
        const int count = static_cast<int>(std::min<qint64>(size, _body.size()));
        std::copy_n(_body.constData(), count, data);
        _body.remove(0, count);
        return count;
    }

private:
    QByteArray _body;
};

enum class Telling { BeforeTheReplyIsThere, Never };

/// Gives out one reply, which is over before anybody waits for it.
class HastyManager : public QNetworkAccessManager {
public:
    HastyManager(QNetworkReply* reply, Telling telling) : _reply(reply), _telling(telling) { _reply->setParent(this); }

protected:
    QNetworkReply* createRequest(Operation, const QNetworkRequest&, QIODevice*) override {
        if (_telling == Telling::BeforeTheReplyIsThere) {
            Q_EMIT finished(_reply);
        }
        return _reply;
    }

private:
    QNetworkReply* _reply;
    Telling _telling;
};

class ObservableManager : public QNetworkAccessManager {
public:
    int ObserverCount() const {
        return receivers(SIGNAL(finished(QNetworkReply*))) +
               receivers(SIGNAL(sslErrors(QNetworkReply*, QList<QSslError>)));
    }
};

class OddHostTest : public ExternalSyncConfigManagerTest {
protected:
    ExternalSyncConfig FetchHastily(const QByteArray& body, int announcedLength, Telling telling) {
        _factory->make = [=] {
            return std::make_shared<HastyManager>(new FinishedReply(body, announcedLength), telling);
        };
        return Fetch(QUrl(Text("http://service.test/")));
    }

    void ShareOneManager() {
        _factory->make = [this] { return _shared; };
    }

    /// The error with which a request of the host itself ends.
    static QNetworkReply::NetworkError ErrorOf(QNetworkReply* reply) {
        if (!reply->isFinished()) {
            QEventLoop loop;
            QObject::connect(reply, SIGNAL(finished()), &loop, SLOT(quit()));
            loop.exec();
        }
        return reply->error();
    }

    const std::shared_ptr<ObservableManager> _shared = std::make_shared<ObservableManager>();
};

using OddHostOverTlsTest = OverTls<OddHostTest>;

TEST_F(OddHostTest, AFactoryMayHandOutOneManagerAgainAndAgain) {
    ShareOneManager();
    ScriptedServer server({AnswerOf(Document("whole.xml")), AnswerOf(Document("frequency-15.xml"))});
    const QUrl url = server.Url(Text("/"));
    ExpectWhole(Fetch(url));
    EXPECT_EQ(_shared->ObserverCount(), 0);
    EXPECT_EQ(Fetch(url).syncFrequency, 15);
    EXPECT_EQ(_shared->ObserverCount(), 0);
}

TEST_F(OddHostTest, AFailureLeavesASharedManagerAloneToo) {
    ShareOneManager();
    _http->onAsked = [] { throw 1; };
    ExpectDefaults(Fetch(QUrl()));
    EXPECT_EQ(_shared->ObserverCount(), 0);
}

TEST_F(OddHostOverTlsTest, TheHostsOwnRequestsAfterAFetchAcceptNoUnknownCertificate) {
    ShareOneManager();
    const tests::SelfSignedCertificate certificate;
    ScriptedServer server({AnswerOf(Document("whole.xml"))}, certificate.Files());
    ExpectWhole(FetchFrom(server));
    ScriptedServer other({AnswerOf("secret")}, certificate.Files());
    QNetworkReply* const own = _shared->get(QNetworkRequest(other.Url(Text("/"))));
    EXPECT_EQ(ErrorOf(own), QNetworkReply::SslHandshakeFailedError);
}

TEST_F(OddHostOverTlsTest, TheHostsOwnRequestsDuringAFetchAreNoneOfItsBusiness) {
    ShareOneManager();
    const tests::SelfSignedCertificate certificate;
    ScriptedServer other({AnswerOf("secret")}, certificate.Files());
    ScriptedServer::Step slow = AnswerOf(Document("whole.xml"));
    slow.millisecondsPerByte = 1;
    ScriptedServer server({slow}, certificate.Files());
    QNetworkReply* own = nullptr;
    _http->onAsked = [&] { own = _shared->get(QNetworkRequest(other.Url(Text("/")))); };
    ExpectWhole(FetchFrom(server));
    EXPECT_EQ(ErrorOf(own), QNetworkReply::SslHandshakeFailedError);
    EXPECT_EQ(_log.Records().size(), 3U);
}

TEST_F(OddHostTest, WhatIsMissingGivesTheDefaultsAndOneError) {
    ExternalSyncConfigManager withoutHttp(nullptr, _factory);
    ExpectDefaults(withoutHttp.GetExternalSyncConfig());
    ASSERT_EQ(_log.Records().size(), 1U);
    ExternalSyncConfigManager withoutFactory(_http, nullptr);
    ExpectDefaults(withoutFactory.GetExternalSyncConfig());
    ASSERT_EQ(_log.Records().size(), 2U);
    _factory->make = [] { return nullptr; };
    ExpectDefaults(_manager.GetExternalSyncConfig());
    ASSERT_EQ(_log.Records().size(), 3U);
    for (const LogRecord& record : _log.Records()) {
        EXPECT_EQ(record.level, ErrorLevel);
        EXPECT_THAT(record.text, testing::StartsWith("Unable to retrieve sync configuration from remote server.  "));
    }
}

TEST_F(OddHostTest, AnApplicationThatQuitsDuringAFetchGetsTheDefaults) {
    ScriptedServer server({ScriptedServer::Answer(QByteArray(), Ending::Stall)});
    QTimer::singleShot(0, &_application, SLOT(quit()));
    ExpectDefaults(Fetch(server.Url(Text("/"))));
    ExpectOneError(
        "Unable to retrieve sync configuration from remote server.  The event loop was left before the answer came.");
}

TEST_F(OddHostTest, AReplyThatIsOverBeforeItIsWaitedForIsReadOnce) {
    const QByteArray whole = Document("whole.xml");
    for (const Telling telling : {Telling::BeforeTheReplyIsThere, Telling::Never}) {
        ExpectWhole(FetchHastily(whole, whole.size(), telling));
    }
    ExpectWhole(Fetch(QUrl::fromEncoded("data:text/xml," + whole.toPercentEncoding())));
}

TEST_F(OddHostTest, ABodyShorterThanAnnouncedIsAFailureWhateverTheReplySays) {
    const QByteArray whole = Document("whole.xml");
    ExpectDefaults(FetchHastily(whole, whole.size() + 1, Telling::BeforeTheReplyIsThere));
    ExpectNetworkError(QNetworkReply::RemoteHostClosedError);
}

TEST_F(OddHostTest, ABodyIsNotComparedWithTheLengthOfItsCompressedForm) {
    const QByteArray compressed = qCompress("<SyncConfig/>").mid(4);
    ScriptedServer server({ScriptedServer::Answer("HTTP/1.1 200 OK\r\nContent-Encoding: deflate\r\nContent-Length: " +
                                                  QByteArray::number(compressed.size()) + "\r\n\r\n" + compressed)});
    EXPECT_EQ(FetchFrom(server).mostCurrentVersion, Text(""));
}

/// A reply that fails when it is read.
class ThrowingReply : public QNetworkReply {
public:
    ThrowingReply() { open(QIODevice::ReadOnly); }
    void abort() override {}

protected:
    qint64 readData(char*, qint64) override { throw std::runtime_error("unreadable"); }
};

TEST_F(ExternalSyncConfigManagerTest, TheEventLoopIsLeftWhenAnExceptionPasses) {
    ThrowingReply reply;
    const tests::Soon soon([&] { EXPECT_THROW(ConfigAccess::ReplyFinished(_manager, &reply), std::runtime_error); });
    EXPECT_EQ(ConfigAccess::RunEventLoop(_manager), 0);
}

// --- What documents say

struct DocumentCase {
    const char* file;
    const char* version = "";
    const char* url = "";
    int frequency = 180;
};

void PrintTo(const DocumentCase& document, std::ostream* stream) {
    *stream << document.file;
}

const char* const WholeVersion = "KQ51_1001_WIN";
const char* const WholeUrl = "https://service.test/setup.exe";

class SyncConfigDocumentTest : public ExternalSyncConfigManagerTest,
                               public testing::WithParamInterface<DocumentCase> {};

TEST_P(SyncConfigDocumentTest, IsReadForWhatItSays) {
    testing::internal::CaptureStderr();
    const ExternalSyncConfig config = FetchBody(Document(GetParam().file));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(config.mostCurrentVersion, Text(GetParam().version));
    EXPECT_EQ(config.installerUrl, Text(GetParam().url));
    EXPECT_EQ(config.syncFrequency, GetParam().frequency);
    const char* const frequencyText = config.syncFrequency == 180 ? "Default sync Frequency %1 is set."
                                                                  : "Sync Frequency %1 retrieved from remote server.";
    const std::vector<std::string> texts = {
        std::string("Version ") + GetParam().version + " retrieved from remote server.",
        std::string("Installer Url ") + GetParam().url + " retrieved from remote server.",
        Text(frequencyText).arg(config.syncFrequency).toStdString()};
    ASSERT_EQ(_log.Records().size(), texts.size());
    for (size_t i = 0; i < texts.size(); ++i) {
        EXPECT_EQ(_log.Records()[i].level, DebugLevel);
        EXPECT_EQ(_log.Records()[i].text, texts[i]);
    }
}

std::string TestNameOf(const testing::TestParamInfo<DocumentCase>& info) {
    std::string name = info.param.file;
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == '-' || c == '.' || c == ','; }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Good, SyncConfigDocumentTest,
                         testing::Values(DocumentCase{"whole.xml", WholeVersion, WholeUrl, 60},
                                         DocumentCase{"declaration.xml", WholeVersion, WholeUrl, 60},
                                         DocumentCase{"declared-utf-8.xml", WholeVersion, WholeUrl, 60},
                                         DocumentCase{"declared-utf-16.xml", WholeVersion, WholeUrl, 60},
                                         DocumentCase{"declared-unknown-encoding.xml", WholeVersion, WholeUrl, 60},
                                         DocumentCase{"byte-order-mark.xml", WholeVersion, WholeUrl, 60},
                                         DocumentCase{"blank-first-line.xml", WholeVersion, WholeUrl, 60},
                                         DocumentCase{"mark-blank-line-and-declaration.xml", WholeVersion, WholeUrl,
                                                      60},
                                         DocumentCase{"comment-and-instruction-first.xml", WholeVersion, WholeUrl, 60},
                                         DocumentCase{"other-children.xml", WholeVersion, WholeUrl, 60},
                                         DocumentCase{"other-order.xml", WholeVersion, WholeUrl, 60},
                                         DocumentCase{"text-after-nul.xml", WholeVersion, WholeUrl, 60}),
                         TestNameOf);

INSTANTIATE_TEST_SUITE_P(
    Values, SyncConfigDocumentTest,
    testing::Values(
        DocumentCase{"escapes-and-cdata.xml", "KQ51<%1>", "https://service.test/%1?a=1&b=2", 60},
        DocumentCase{"blanks-around-values.xml", "\n KQ51_1001_WIN ", WholeUrl, 60},
        DocumentCase{"nested-in-a-value.xml", "KQ51_1", WholeUrl, 60},
        DocumentCase{"two-versions.xml", WholeVersion, WholeUrl, 60},
        DocumentCase{"two-of-each.xml", WholeVersion, WholeUrl, 60}, DocumentCase{"elements-elsewhere.xml"},
        DocumentCase{"elements-exchanged.xml"}, DocumentCase{"elements-in-other-case.xml"}, DocumentCase{"wrapped.xml"},
        // Every byte is one character.
        DocumentCase{"latin-1.xml", "Gr\xC3\xB6\xC3\x9F\x65", WholeUrl, 60},
        DocumentCase{"utf-8-letters.xml", "Gr\xC3\x83\xC2\xB6\xC3\x83\xC2\x9F\x65", WholeUrl, 60},
        DocumentCase{"query-in-a-value.xml", "{doc('file:///etc/passwd')}", WholeUrl, 60},
        DocumentCase{"inclusion.xml", "", WholeUrl, 60}, DocumentCase{"without-version.xml", "", WholeUrl, 60},
        DocumentCase{"without-url.xml", WholeVersion, "", 60},
        DocumentCase{"without-frequency.xml", WholeVersion, WholeUrl, 180}, DocumentCase{"empty-elements.xml"}),
    TestNameOf);

INSTANTIATE_TEST_SUITE_P(Frequencies, SyncConfigDocumentTest,
                         testing::Values(DocumentCase{"frequency-14.xml", WholeVersion, WholeUrl, 180},
                                         DocumentCase{"frequency-15.xml", WholeVersion, WholeUrl, 15},
                                         DocumentCase{"frequency--60.xml", WholeVersion, WholeUrl, 180},
                                         DocumentCase{"frequency-abc.xml", WholeVersion, WholeUrl, 180},
                                         DocumentCase{"frequency-60.5.xml", WholeVersion, WholeUrl, 180},
                                         DocumentCase{"frequency-16.xml", WholeVersion, WholeUrl, 16},
                                         DocumentCase{"frequency-020.xml", WholeVersion, WholeUrl, 20},
                                         DocumentCase{"frequency-0x3C.xml", WholeVersion, WholeUrl, 180},
                                         DocumentCase{"frequency-3C.xml", WholeVersion, WholeUrl, 180},
                                         DocumentCase{"frequency-1e3.xml", WholeVersion, WholeUrl, 180},
                                         DocumentCase{"frequency-1,000.xml", WholeVersion, WholeUrl, 180},
                                         DocumentCase{"frequency-in-other-digits.xml", WholeVersion, WholeUrl, 180},
                                         DocumentCase{"frequency-2147483647.xml", WholeVersion, WholeUrl, 2147483647},
                                         DocumentCase{"frequency-2147483648.xml", WholeVersion, WholeUrl, 180}),
                         TestNameOf);

INSTANTIATE_TEST_SUITE_P(Unreadable, SyncConfigDocumentTest,
                         testing::Values(DocumentCase{"login-page.html"}, DocumentCase{"other-root.xml"},
                                         DocumentCase{"root-in-other-case.xml"}, DocumentCase{"other-namespace.xml"},
                                         DocumentCase{"prefix-undeclared.xml"}, DocumentCase{"text.txt"},
                                         DocumentCase{"blank.xml"}, DocumentCase{"unended.xml"},
                                         DocumentCase{"declaration-unended.xml"}, DocumentCase{"mismatched.xml"},
                                         DocumentCase{"more-after-the-root.xml"}, DocumentCase{"utf-16.xml"},
                                         DocumentCase{"nul-inside.xml"}, DocumentCase{"control-character.xml"},
                                         DocumentCase{"undeclared-entity.xml"}, DocumentCase{"document-type.xml"},
                                         DocumentCase{"external-entity.xml"}, DocumentCase{"external-subset.xml"},
                                         DocumentCase{"billion-laughs.xml"}),
                         TestNameOf);

TEST_F(ExternalSyncConfigManagerTest, AHugeDocumentIsRead) {
    const QByteArray filler = "<Other>" + QByteArray("<e a=\"b\">text</e>\n").repeated(100000) + "</Other>";
    ExpectWhole(FetchBody(Document("whole.xml").replace("</SyncConfig>", filler + "</SyncConfig>")));
}

TEST_F(ExternalSyncConfigManagerTest, ADocumentNestedTooDeeplyIsNotRead) {
    const int depth = 200000;
    const ExternalSyncConfig config = FetchBody(
        Document("whole.xml")
            .replace("KQ51_1001_WIN", QByteArray("<a>").repeated(depth) + QByteArray("</a>").repeated(depth)));
    EXPECT_EQ(config.mostCurrentVersion, Text(""));
    EXPECT_EQ(config.installerUrl, Text(""));
    EXPECT_EQ(config.syncFrequency, 180);
}

TEST_F(ExternalSyncConfigManagerTest, RecordsNameTheirSourceAndTheirFunction) {
    FetchBody(Document("whole.xml"));
    const LogRecord& record = _log.Records().front();
    EXPECT_EQ(record.logger, "config");
    EXPECT_EQ(record.file, "ExternalSyncConfigManager");
    EXPECT_GT(record.line, 0);
    EXPECT_THAT(record.function, testing::HasSubstr("ExternalSyncConfigManager::_ParseConfigFromResponse"));
}

// --- The readers of whole documents

QDomDocument Parsed(const char* xml) {
    QDomDocument document;
    EXPECT_TRUE(document.setContent(QByteArray(xml)));
    return document;
}

TEST_F(ExternalSyncConfigManagerTest, TheVersionReaderTakesTheFirstVersionAnywhere) {
    ConfigAccess::ParseVersion(_manager, Parsed("<a><b><Version64>one</Version64></b><Version64>two</Version64></a>"));
    EXPECT_EQ(ConfigAccess::Config(_manager).mostCurrentVersion, Text("one"));
}

TEST_F(ExternalSyncConfigManagerTest, TheVersionReaderTakesTheFirstThingInTheElement) {
    ConfigAccess::ParseVersion(_manager, Parsed("<Version64>one<b/>two</Version64>"));
    EXPECT_EQ(ConfigAccess::Config(_manager).mostCurrentVersion, Text("one"));
    ConfigAccess::ParseVersion(_manager, Parsed("<Version64><!--three-->four</Version64>"));
    EXPECT_EQ(ConfigAccess::Config(_manager).mostCurrentVersion, Text("three"));
    EXPECT_EQ(ConfigAccess::Config(_manager).installerUrl, Text(""));
    EXPECT_EQ(ConfigAccess::Config(_manager).syncFrequency, 180);
}

TEST_F(ExternalSyncConfigManagerTest, TheVersionReaderKeepsTheVersionWhenThereIsNone) {
    for (const char* xml :
         {"<a/>", "<Version64/>", "<a><Version64/><Version64>second</Version64></a>", "<Version32>v</Version32>",
          "<Version64><b>inner</b></Version64>", "<version64>v</version64>"}) {
        ConfigAccess::ParseVersion(_manager, Parsed(xml));
        EXPECT_EQ(ConfigAccess::Config(_manager).mostCurrentVersion, Text("0.0.0.0")) << xml;
    }
}

TEST_F(ExternalSyncConfigManagerTest, TheFrequencyReaderTakesTheFirstFrequencyOf15OrMore) {
    ConfigAccess::ParseSyncFrequency(_manager, Parsed("<a><b><syncFrequency>15</syncFrequency></b></a>"));
    EXPECT_EQ(ConfigAccess::Config(_manager).syncFrequency, 15);
    for (const char* xml :
         {"<a/>", "<SyncFrequency>30</SyncFrequency>", "<syncFrequency>14</syncFrequency>",
          "<syncFrequency>abc</syncFrequency>", "<syncFrequency/>", "<syncFrequency>0x3C</syncFrequency>",
          "<a><syncFrequency>14</syncFrequency><syncFrequency>60</syncFrequency></a>",
          "<syncFrequency><b>60</b></syncFrequency>", "<syncfrequency>60</syncfrequency>"}) {
        ConfigAccess::ParseSyncFrequency(_manager, Parsed(xml));
        EXPECT_EQ(ConfigAccess::Config(_manager).syncFrequency, 15) << xml;
    }
    ConfigAccess::ParseSyncFrequency(_manager, Parsed("<syncFrequency>020</syncFrequency>"));
    EXPECT_EQ(ConfigAccess::Config(_manager).syncFrequency, 20);
    EXPECT_EQ(ConfigAccess::Config(_manager).mostCurrentVersion, Text("0.0.0.0"));
    EXPECT_THAT(_log.Records(), IsEmpty());
}

}  // namespace
