#pragma once

#include <log4cplus/logger.h>

#include <QEventLoop>
#include <QList>
#include <QNetworkReply>
#include <QSslError>
#include <QString>
#include <memory>

#include "dvsync/DvsyncExport.h"
#include "dvsync/ExternalSyncConfig.h"
#include "host/interfaces/IExternalSyncConfigManager.h"
#include "host/interfaces/dv/IDrovaneHttp.h"
#include "host/interfaces/factory/INetworkAccessManagerFactory.h"

class QDomDocument;

namespace sync {
namespace dv {
namespace dvsync {

/// Fetches the sync-configuration document of the Drovane service and reads it. Keeps its collaborators for its whole
/// life. Logs as "config". To be called on the thread that it lives in, which needs a Qt event dispatcher; not
/// re-entrant.
class DVSYNC_EXPORT ExternalSyncConfigManager : public interf::IExternalSyncConfigManager {
    Q_OBJECT

public:
    /// Fetches nothing yet.
    ExternalSyncConfigManager(std::shared_ptr<interf::dv::IDrovaneHttp> http,
                              std::shared_ptr<interf::factory::INetworkAccessManagerFactory> factory);
    ~ExternalSyncConfigManager() override;

    /// Sends one GET through a network access manager asked for it, and runs an event loop until that is answered,
    /// however long it takes. Any certificate is accepted for this request, and for no other that the manager has. A
    /// failure is logged once and gives the defaults; it is never thrown. Failures are a collaborator or a manager that
    /// is missing, whatever a collaborator throws, a body shorter than announced, and an application that quits before
    /// the answer. From an answer that is no sync configuration, that declares a document type or that nests elements
    /// deeper than 100 come an empty version, an empty URL and the default frequency.
    ExternalSyncConfig GetExternalSyncConfig() override;

private:
    // The way in for tests to what no public operation reaches.
    friend class ExternalSyncConfigManagerAccess;

    Q_SLOT void _SslErrors(QNetworkReply* reply, const QList<QSslError>& errors);
    Q_SLOT void _ReplyFinished(QNetworkReply* reply);

    bool _IsAwaited(const QNetworkReply* reply) const;
    ExternalSyncConfig _GetExternalConfig();
    void _ExitEventLoop();
    void _ParseConfigFromResponse();
    void _ParseVersionFromResponse(const QDomDocument& document);
    void _ParseSyncFrequencyFromResponse(const QDomDocument& document);

    static log4cplus::Logger _logger;

    QEventLoop eventLoop;
    ExternalSyncConfig config;
    QString responseText;
    std::shared_ptr<interf::dv::IDrovaneHttp> http;
    std::shared_ptr<interf::factory::INetworkAccessManagerFactory> networkAccessManagerFactory;
    // Of the fetch that runs, once its request is sent: before, only its own reply can be heard of.
    QNetworkReply* awaitedReply = nullptr;
    bool replyIsFinished = false;
};

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
