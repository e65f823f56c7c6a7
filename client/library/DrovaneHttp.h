#pragma once

#include "host/configuration/ServerConfiguration.h"
#include "host/interfaces/dv/IDrovaneHttp.h"

namespace ovsync {
namespace library {

/// The addresses of one server. Thread-safe.
///
/// \code
/// sync::config::ServerConfiguration account;
/// account.baseUrl = QUrl(QStringLiteral("http://localhost:8080"));
/// ovsync::library::DrovaneHttp addresses(account);
/// const QUrl settings = *addresses.GetSyncConfigUrl();
/// \endcode
class DrovaneHttp : public sync::interf::dv::IDrovaneHttp {
public:
    /// Throws SyncException when `server` has no http or https URL. A user, a password, a query and a fragment of that
    /// URL are left out of the addresses.
    explicit DrovaneHttp(const sync::config::ServerConfiguration& server);

    /// Ends in '/'.
    std::shared_ptr<QUrl> GetServiceUrl() override;

    std::shared_ptr<QUrl> GetSyncConfigUrl() override;

private:
    const QUrl _serviceUrl;
};

}  // namespace library
}  // namespace ovsync
