#pragma once

#include <QMap>
#include <QString>
#include <QUrl>

#include "client/wire/HttpConnection.h"

namespace ovsync {
namespace requests {

enum class ServerKind {
    Service,
    /// Another WebDAV server, which does not know the service's own properties.
    Foreign,
    /// It does not say, so it is asked for all that either of them knows.
    Unknown
};

/// What is known of a server. A plain value.
struct ServerTraits {
    ServerKind kind = ServerKind::Unknown;
    /// Whether it was seen to list folders, but to refuse whole trees.
    bool isRefusingTrees = false;
    /// How many levels of a tree it was seen to list by one answer.
    int levelsSeen = 0;
};

/// What is known of the servers that a connection talks to. Not thread-safe.
class ServerCapabilities {
public:
    /// `connection` has to outlive this object.
    explicit ServerCapabilities(wire::HttpConnection& connection);

    /// The server of `collection`, for this object to remember and for the caller to add to. Asks each server once, by
    /// OPTIONS of `collection`. Throws TransactionError when there is no answer.
    ServerTraits& Of(const QUrl& collection);

private:
    wire::HttpConnection& _connection;
    QMap<QString, ServerTraits> _traitsByServer;
};

}  // namespace requests
}  // namespace ovsync
