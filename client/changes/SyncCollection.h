#pragma once

#include <QUrl>
#include <functional>
#include <future>
#include <memory>

#include "client/changes/ChangeReport.h"
#include "client/changes/IChangeSource.h"
#include "client/requests/AccountConnection.h"
#include "host/http/DAVPropfindResult.h"

namespace ovsync {
namespace changes {

/// Asks by `sync-collection` (RFC 6578), to the lowest level. A server that is not the service is believed to go so
/// deep only once it was seen to.
class SyncCollection : public IChangeSource {
public:
    /// Makes records of what a server listed, and adds them to the changes.
    using Mapper = std::function<void(const std::shared_ptr<sync::http::DAVPropfindResult>&, ServiceChanges&)>;
    /// Of a server path.
    using UrlMaker = std::function<QUrl(const QString&)>;

    /// `connection` outlives this object, and is used by nobody else between Ask and Take.
    SyncCollection(requests::AccountConnection& connection, const QUrl& collection, UrlMaker urlOf, Mapper map);

    std::optional<QString> StateNow() override;
    void Ask(const QString& state) override;
    ServiceChanges Take() override;
    ServiceChanges LookAt(const QStringList& serverPaths) override;

private:
    /// Null when the answer cannot be used; then `answer` says why.
    std::unique_ptr<ChangeReport> _Report(const QByteArray& token, ServiceChanges::Answer& answer);
    void _LookAt(const QString& serverPath, sync::http::DAVPropfindResult& present, ServiceChanges& changes);

    requests::AccountConnection& _connection;
    const QUrl _collection;
    const UrlMaker _urlOf;
    const Mapper _map;
    ServiceChanges::Answer _answer = ServiceChanges::Answer::NotAble;
    std::future<std::unique_ptr<ChangeReport>> _asked;
};

}  // namespace changes
}  // namespace ovsync
