#pragma once

#include <QString>
#include <QUrl>
#include <memory>

#include "client/changes/ChangeReport.h"
#include "client/changes/StateRequest.h"
#include "client/changes/ToldChanges.h"
#include "client/requests/AccountConnection.h"

namespace ovsync {
namespace changes {

/// Asks by `sync-collection` (RFC 6578), to the lowest level. A server that is not the service is believed to go so
/// deep only once it was seen to.
class SyncCollection {
public:
    /// `connection` outlives this object. `collection` ends in '/'.
    SyncCollection(requests::AccountConnection& connection, const QUrl& collection)
        : _connection(connection), _collection(collection) {}

    /// What `now` says of the state; empty when the server does not report what changes. Throws TransactionError when
    /// there is no answer at all.
    QString StateOf(const StateRequest& now);

    /// What changed since `state`. Throws TransactionError when there is no answer at all.
    ToldChanges ChangesSince(const QString& state);

private:
    /// Null when the answer cannot be used; then `answer` says why.
    std::unique_ptr<ChangeReport> _Report(const QByteArray& token, ServiceChanges::Answer& answer);

    requests::AccountConnection& _connection;
    const QUrl _collection;
};

}  // namespace changes
}  // namespace ovsync
