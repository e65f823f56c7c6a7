#pragma once

#include <QUrl>
#include <memory>

#include "client/wire/AnswerSummary.h"
#include "client/wire/TransactionError.h"
#include "host/interfaces/factory/INetworkAccessManagerFactory.h"

namespace ovsync {
namespace library {

/// Hands out the managers of another factory to a library that fetches the sync configuration with them, and looks at
/// the replies: the library takes whatever happens for a configuration. Not thread-safe.
///
/// \code
/// #include "client/library/DrovaneHttp.h"
/// #include "client/library/NetworkAccessManagerFactory.h"
/// #include "client/library/RequestAuthenticatorFactory.h"
/// #include "dvsync/ExternalSyncConfig.h"
/// #include "dvsync/ExternalSyncConfigManager.h"
///
/// // In a process that has a QCoreApplication.
/// sync::config::ServerConfiguration account;
/// account.baseUrl = QUrl(QStringLiteral("http://localhost:8080"));
/// const auto authenticators = std::make_shared<ovsync::library::RequestAuthenticatorFactory>(QString(), QString());
/// const auto watch = std::make_shared<ovsync::library::SyncConfigWatch>(
///     std::make_shared<ovsync::library::NetworkAccessManagerFactory>(authenticators, 1, account.baseUrl));
/// const auto addresses = std::make_shared<ovsync::library::DrovaneHttp>(account);
/// sync::dv::dvsync::ExternalSyncConfigManager settings(addresses, watch);
/// const sync::dv::dvsync::ExternalSyncConfig published = settings.GetExternalSyncConfig();
/// watch->RequireDocument();  // throws where `published` holds only defaults, because there was no document
/// \endcode
class SyncConfigWatch : public sync::interf::factory::INetworkAccessManagerFactory {
public:
    explicit SyncConfigWatch(const std::shared_ptr<sync::interf::factory::INetworkAccessManagerFactory>& managers);

    std::shared_ptr<QNetworkAccessManager> CreateNetworkAccessManager() override;

    /// What came to the last request of all the managers.
    const wire::AnswerSummary& LastAnswer() const { return _seen->answer; }

    /// Whether it says that there is no document.
    bool IsNothingPublished() const;

    /// Throws unless that was a sync-configuration document: HttpException for a status of 400 or above,
    /// TransactionError for anything else, no answer at all included.
    void RequireDocument() const;

private:
    struct Seen {
        QUrl url;
        wire::AnswerSummary answer;
        bool isTrusted = true;
        /// Why there is no document; empty when there is one.
        QString problem = QStringLiteral("nothing was asked");
        wire::TransactionError::Cause cause = wire::TransactionError::Cause::Other;
    };

    static void _Look(QNetworkReply& reply, Seen& seen);

    const std::shared_ptr<sync::interf::factory::INetworkAccessManagerFactory> _managers;
    // The managers may live longer than this object.
    const std::shared_ptr<Seen> _seen = std::make_shared<Seen>();
};

}  // namespace library
}  // namespace ovsync
