#pragma once

#include <QUrl>
#include <functional>
#include <future>
#include <memory>

#include "client/changes/CollectionTags.h"
#include "client/changes/IChangeSource.h"
#include "client/changes/SyncCollection.h"
#include "client/changes/ToldChanges.h"
#include "client/requests/AccountConnection.h"
#include "host/http/DAVPropfindResult.h"

namespace ovsync {
namespace changes {

/// Asks a server for what changed in a folder in the way that the server can: by a report, and else by the tags of its
/// collections. A state is only ever asked with in the way that it was made for.
class FolderChanges : public IChangeSource {
public:
    /// Makes records of what a server listed, and adds them to the changes.
    using Mapper = std::function<void(const std::shared_ptr<sync::http::DAVPropfindResult>&, ServiceChanges&)>;
    /// Of a server path.
    using UrlMaker = std::function<QUrl(const QString&)>;

    /// `connection` outlives this object, and is used by nobody else between Ask and Take. `folder` is a server path.
    FolderChanges(requests::AccountConnection& connection, const QString& folder, UrlMaker urlOf, Mapper map);

    std::optional<QString> StateNow() override;
    QString Listed(const QString& state) override;
    void Ask(const QString& state) override;
    ServiceChanges Take() override;
    ServiceChanges LookAt(const QStringList& serverPaths) override;

private:
    void _LookAt(const QString& serverPath, sync::http::DAVPropfindResult& present, ServiceChanges& changes);

    requests::AccountConnection& _connection;
    const QString _folder;
    const UrlMaker _urlOf;
    const Mapper _map;
    const QUrl _collection;
    SyncCollection _report;
    CollectionTags _tags;
    std::future<ToldChanges> _asked;
};

}  // namespace changes
}  // namespace ovsync
