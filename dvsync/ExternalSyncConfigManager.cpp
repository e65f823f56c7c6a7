#include "dvsync/ExternalSyncConfigManager.h"

#include <log4cplus/loglevel.h>

#include <QAbstractMessageHandler>
#include <QBuffer>
#include <QDomDocument>
#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QRegExp>
#include <QSourceLocation>
#include <QXmlQuery>
#include <utility>

#include "dvsync/CaughtException.h"
#include "dvsync/Filled.h"
#include "dvsync/HttpFailure.h"
#include "dvsync/Log.h"
#include "dvsync/XmlDocument.h"
#include "host/core/Finally.h"
#include "host/core/SyncException.h"

namespace sync {
namespace dv {
namespace dvsync {

namespace {

const int SmallestSyncFrequency = 15;

#define CONFIG_LOG(level, text) DVSYNC_LOG(_logger, level, "ExternalSyncConfigManager", text)

#define FAILURE_TEXT "Unable to retrieve sync configuration from remote server.  "

void Require(bool condition, const char* complaint) {
    if (!condition) {
        throw core::SyncException(QLatin1String(complaint));
    }
}

// A document that is not the expected one is no failure, and a query would complain on standard error.
class SilentMessageHandler : public QAbstractMessageHandler {
protected:
    void handleMessage(QtMsgType type, const QString& description, const QUrl& identifier,
                       const QSourceLocation& sourceLocation) override {
        Q_UNUSED(type);
        Q_UNUSED(description);
        Q_UNUSED(identifier);
        Q_UNUSED(sourceLocation);
    }
};

// The text is decoded already, so what says at its beginning how to decode it would only mislead the query.
QString WithoutDeclaration(const QString& text) {
    // The byte-order mark is that of UTF-8.
    QRegExp beginning(QLatin1String("^(\xEF\xBB\xBF)?\\s*(<\\?xml\\s[^>]*\\?>\\s*)?"));
    beginning.indexIn(text);
    return text.mid(beginning.matchedLength());
}

QString FirstNodeValue(const QDomDocument& document, const char* name) {
    return document.elementsByTagName(QLatin1String(name)).item(0).firstChild().nodeValue();
}

}  // namespace

log4cplus::Logger ExternalSyncConfigManager::_logger = log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("config"));

ExternalSyncConfigManager::ExternalSyncConfigManager(
    std::shared_ptr<interf::dv::IDrovaneHttp> http_,
    std::shared_ptr<interf::factory::INetworkAccessManagerFactory> factory_)
    : http(std::move(http_)), networkAccessManagerFactory(std::move(factory_)) {}

ExternalSyncConfigManager::~ExternalSyncConfigManager() = default;

ExternalSyncConfig ExternalSyncConfigManager::GetExternalSyncConfig() {
    try {
        return _GetExternalConfig();
    } catch (...) {
        CONFIG_LOG(log4cplus::ERROR_LOG_LEVEL, TextOfCaughtException());
        config.Clear();
        return config;
    }
}

void ExternalSyncConfigManager::_SslErrors(QNetworkReply* reply, const QList<QSslError>& errors) {
    Q_UNUSED(errors);
    if (_IsAwaited(reply)) {
        reply->ignoreSslErrors();
    }
}

void ExternalSyncConfigManager::_ReplyFinished(QNetworkReply* reply) {
    if (!_IsAwaited(reply)) {
        return;
    }
    const core::Finally exitEventLoop([this] { _ExitEventLoop(); });
    replyIsFinished = true;
    QNetworkReply::NetworkError error = reply->error();
    const QByteArray body = error == QNetworkReply::NoError ? reply->readAll() : QByteArray();
    // Qt does not always notice that a connection ended early. It takes the length of a compressed body away.
    if (error == QNetworkReply::NoError &&
        body.size() < reply->header(QNetworkRequest::ContentLengthHeader).toLongLong()) {
        error = QNetworkReply::RemoteHostClosedError;
    }
    if (error != QNetworkReply::NoError) {
        CONFIG_LOG(log4cplus::ERROR_LOG_LEVEL, Filled(FAILURE_TEXT "QNetworkReply::NetworkError code: %0",
                                                      QString::number(static_cast<int>(error))));
        return;
    }
    // Qt 4's conversion: Latin-1, up to the first NUL.
    responseText = QString::fromLatin1(body.constData());
}

bool ExternalSyncConfigManager::_IsAwaited(const QNetworkReply* reply) const {
    return awaitedReply == nullptr || awaitedReply == reply;
}

ExternalSyncConfig ExternalSyncConfigManager::_GetExternalConfig() {
    config.Clear();
    responseText.clear();
    replyIsFinished = false;
    Require(http && networkAccessManagerFactory, FAILURE_TEXT "A collaborator is missing.");
    const std::shared_ptr<QNetworkAccessManager> manager = networkAccessManagerFactory->CreateNetworkAccessManager();
    Require(manager != nullptr, FAILURE_TEXT "There is no network access manager.");
    // The manager may be one that the host goes on using.
    const core::Finally leaveManager([this, &manager] {
        disconnect(manager.get(), nullptr, this, nullptr);
        awaitedReply = nullptr;
    });
    // Qt connects by these texts.
    // clang-format off
    connect(manager.get(), SIGNAL(sslErrors(QNetworkReply *, const QList<QSslError> &)),
            this, SLOT(_SslErrors(QNetworkReply *, const QList<QSslError> &)));
    connect(manager.get(), SIGNAL(finished(QNetworkReply*)), this, SLOT(_ReplyFinished(QNetworkReply*)));
    // clang-format on
    awaitedReply = manager->get(QNetworkRequest(ValueOf(http->GetSyncConfigUrl())));
    if (!replyIsFinished && awaitedReply->isFinished()) {
        _ReplyFinished(awaitedReply);
    }
    if (!replyIsFinished) {
        eventLoop.exec();
    }
    Require(replyIsFinished, FAILURE_TEXT "The event loop was left before the answer came.");
    _ParseConfigFromResponse();
    return config;
}

void ExternalSyncConfigManager::_ExitEventLoop() {
    eventLoop.exit(0);
}

void ExternalSyncConfigManager::_ParseConfigFromResponse() {
    if (responseText.isEmpty()) {
        return;
    }
    const QString text = WithoutDeclaration(responseText);
    QByteArray units(reinterpret_cast<const char*>(text.utf16()), text.size() * static_cast<int>(sizeof(QChar)));
    if (!IsSafeForQuery(units)) {
        units.clear();
    }
    QBuffer buffer(&units);
    buffer.open(QIODevice::ReadOnly);
    SilentMessageHandler silence;
    QXmlQuery query;
    query.setMessageHandler(&silence);
    query.bindVariable(QLatin1String("syncConfig"), &buffer);
    QDomDocument document;
    QString result;
    const auto textOf = [&](const char* expression) {
        query.setQuery(QLatin1String(expression));
        query.evaluateTo(&result);
        document.setContent(result);
        return document.documentElement().text();
    };

    config.mostCurrentVersion = textOf("doc($syncConfig)/SyncConfig/SyncVersions/Version64");
    CONFIG_LOG(log4cplus::DEBUG_LOG_LEVEL,
               Filled("Version %1 retrieved from remote server.", config.mostCurrentVersion));
    config.installerUrl = textOf("doc($syncConfig)/SyncConfig/SyncUrls/Url64");
    CONFIG_LOG(log4cplus::DEBUG_LOG_LEVEL,
               Filled("Installer Url %1 retrieved from remote server.", config.installerUrl));
    const int frequency = textOf("doc($syncConfig)/SyncConfig/SyncFrequency").toInt();
    if (frequency < SmallestSyncFrequency) {
        config.syncFrequency = ExternalSyncConfig::DefaultSyncFrequency;
        CONFIG_LOG(log4cplus::DEBUG_LOG_LEVEL,
                   Filled("Default sync Frequency %1 is set.", QString::number(config.syncFrequency)));
    } else {
        config.syncFrequency = frequency;
        CONFIG_LOG(log4cplus::DEBUG_LOG_LEVEL,
                   Filled("Sync Frequency %1 retrieved from remote server.", QString::number(frequency)));
    }
}

void ExternalSyncConfigManager::_ParseVersionFromResponse(const QDomDocument& document) {
    const QString version = FirstNodeValue(document, "Version64");
    if (!version.isEmpty()) {
        config.mostCurrentVersion = version;
    }
}

void ExternalSyncConfigManager::_ParseSyncFrequencyFromResponse(const QDomDocument& document) {
    const int frequency = FirstNodeValue(document, "syncFrequency").toInt();
    if (frequency >= SmallestSyncFrequency) {
        config.syncFrequency = frequency;
    }
}

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
