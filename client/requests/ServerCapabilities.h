#pragma once

#include <QMap>
#include <QString>
#include <QUrl>

#include "client/wire/HttpConnection.h"

namespace ovsync {
namespace requests {

/// What is known of the servers that a connection talks to. Not thread-safe.
class ServerCapabilities {
public:
    /// `connection` has to outlive this object.
    explicit ServerCapabilities(wire::HttpConnection& connection);

    /// Whether the server of `collection` is another WebDAV server than the service, which does not know the service's
    /// own properties. Asks each server once, by OPTIONS of `collection`, and remembers what it said; a server that
    /// does not say counts as the service. Throws TransactionError when there is no answer.
    bool IsForeign(const QUrl& collection);

private:
    wire::HttpConnection& _connection;
    QMap<QString, bool> _foreignByServer;
};

}  // namespace requests
}  // namespace ovsync
