#pragma once

#include <QByteArray>
#include <QList>
#include <QLocalServer>
#include <QPointer>
#include <QSet>
#include <QString>
#include <functional>

class QLocalSocket;

namespace ovsync {
namespace agent {

/// Answers the commands of this user at a local socket, which nobody else can open. A request is a line, and so is each
/// answer: "status" is answered by the status; "watch" by the same now and whenever it changed; "reload" and "stop" are
/// carried out, and then answered by it, and so is what LookRequest makes. To be used on one thread, whose event loop
/// it needs.
class StatusServer {
public:
    struct Actions {
        std::function<QByteArray()> status;
        std::function<void()> reload;
        std::function<void()> stop;
        /// At the folder at this path.
        std::function<void(const QString&)> look;
    };

    explicit StatusServer(const Actions& actions);

    /// Its name in a folder that is for this user alone.
    static QString PathIn(const QString& folder);

    /// Has the folder at the absolute path `directory` looked at soon.
    static QByteArray LookRequest(const QString& directory);

    /// Throws SyncException. What a dead process left there is replaced.
    void Listen(const QString& path);

    /// Whoever watches is told the status, unless they still have to read the last one.
    void TellWatchers();

private:
    void _Accept();
    void _Read(QLocalSocket& socket);
    void _CatchUp(QLocalSocket& socket);

    const Actions _actions;
    /// Those who have not read what they were told before, and have to be told again. Before the server, whose sockets
    /// say farewell when it goes.
    QSet<QLocalSocket*> _behind;
    QLocalServer _server;
    QList<QPointer<QLocalSocket>> _watchers;
};

}  // namespace agent
}  // namespace ovsync
