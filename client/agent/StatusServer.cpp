#include "client/agent/StatusServer.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QLocalSocket>
#include <QUrl>
#include <climits>
#include <cstring>

#include "host/core/SyncException.h"

namespace ovsync {
namespace agent {

namespace {

/// With room for a path, each byte of which may need three.
const int LongestRequest = 3 * PATH_MAX + 100;
const char* const Look = "look ";

bool IsOfThisUser(const QLocalSocket& socket) {
    ucred peer{};
    socklen_t size = sizeof(peer);
    return getsockopt(static_cast<int>(socket.socketDescriptor()), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
           peer.uid == getuid();
}

}  // namespace

StatusServer::StatusServer(const Actions& actions) : _actions(actions) {
    _server.setSocketOptions(QLocalServer::UserAccessOption);
    QObject::connect(&_server, &QLocalServer::newConnection, [this] { _Accept(); });
}

QString StatusServer::PathIn(const QString& folder) {
    return folder + QLatin1String("/agent.sock");
}

QByteArray StatusServer::LookRequest(const QString& directory) {
    return Look + QUrl::toPercentEncoding(directory, "/");
}

void StatusServer::Listen(const QString& path) {
    QLocalServer::removeServer(path);
    if (!_server.listen(path) || chmod(path.toUtf8().constData(), S_IRUSR | S_IWUSR) != 0) {
        throw sync::core::SyncException(QStringLiteral("%1: %2").arg(path, _server.errorString()));
    }
}

void StatusServer::TellWatchers() {
    _watchers.removeAll(nullptr);
    if (_watchers.isEmpty()) {
        return;
    }
    const QByteArray line = _actions.status();
    for (const QPointer<QLocalSocket>& watcher : _watchers) {
        if (watcher->bytesToWrite() == 0) {
            watcher->write(line);
        } else {
            // Who is slow is told no more than the last of several.
            _behind.insert(watcher);
        }
    }
}

void StatusServer::_Accept() {
    while (QLocalSocket* const socket = _server.nextPendingConnection()) {
        if (!IsOfThisUser(*socket)) {
            socket->deleteLater();
            socket->abort();
            continue;
        }
        QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        QObject::connect(socket, &QLocalSocket::readyRead, [this, socket] { _Read(*socket); });
        _Read(*socket);
    }
}

void StatusServer::_Read(QLocalSocket& socket) {
    // What is carried out may run the event loop.
    const QPointer<QLocalSocket> there(&socket);
    while (there && socket.canReadLine()) {
        const QByteArray request = socket.readLine().trimmed();
        if (request == "watch") {
            _watchers.append(there);
            QObject::connect(&socket, &QLocalSocket::bytesWritten, [this, &socket] { _CatchUp(socket); });
            QObject::connect(&socket, &QLocalSocket::disconnected, [this, &socket] { _behind.remove(&socket); });
        } else if (request == "reload") {
            _actions.reload();
        } else if (request == "stop") {
            _actions.stop();
        } else if (request.startsWith(Look)) {
            _actions.look(QUrl::fromPercentEncoding(request.mid(static_cast<int>(std::strlen(Look)))));
        } else if (request != "status") {
            socket.abort();
            return;
        }
        if (there) {
            socket.write(_actions.status());
            socket.flush();
        }
    }
    if (there && socket.bytesAvailable() > LongestRequest) {
        socket.abort();
    }
}

void StatusServer::_CatchUp(QLocalSocket& socket) {
    if (socket.bytesToWrite() == 0 && _behind.remove(&socket)) {
        socket.write(_actions.status());
    }
}

}  // namespace agent
}  // namespace ovsync
