#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
#include <QUrl>
#include <atomic>
#include <functional>
#include <thread>

class QTcpSocket;

namespace tests {

/// A server that expects a fixed number of requests and answers each with given bytes, over a real socket on an
/// ephemeral port of 127.0.0.1. Works in a thread of its own, on one connection at a time. What it saw is read after
/// Stop. Not thread-safe.
class ScriptedServer {
public:
    struct Request {
        QByteArray method;
        QByteArray target;
        /// Names in lower case.
        QMap<QByteArray, QByteArray> headers;
        QByteArray body;
        /// Counts from 1.
        int connection = 0;
    };

    /// What happens to the connection after the answer.
    enum class Ending { KeepOpen, Close, Reset, Stall };

    struct Step {
        std::function<QByteArray(const Request&)> answer;
        Ending ending = Ending::KeepOpen;
        /// The pause after each byte of the answer; without one it is sent in one piece.
        int millisecondsPerByte = 0;
        /// Whether the request's body is received, after a word to go on where the request asks for one. Otherwise the
        /// answer goes out before it.
        bool takesBody = true;
        bool saysGoOn = true;
    };

    struct Certificate {
        QString certificateFile;
        QString keyFile;
    };

    /// Serves TLS with `certificate` where there is one.
    explicit ScriptedServer(const QList<Step>& steps, const Certificate& certificate = Certificate());
    /// Answers always the same.
    static Step Answer(const QByteArray& bytes, Ending ending = Ending::KeepOpen);
    ~ScriptedServer();
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    QUrl Url(const QString& path) const;

    void Stop();
    /// Those that were expected and came.
    const QList<Request>& Requests() const { return _requests; }
    /// Those whose connection ended before all of their body came.
    const QList<Request>& BrokenOff() const { return _brokenOff; }
    /// Whether every expected request came completely, and no other.
    bool SawItsScript() const { return _requests.size() == _steps.size() && _unexpectedRequests == 0; }

private:
    void _ServeConnection(QTcpSocket& socket);
    bool _ReadHead(QTcpSocket& socket, Request& request);
    bool _ReadBody(QTcpSocket& socket, const Step& step, Request& request);
    bool _WaitForBytes(QTcpSocket& socket);
    void _Send(QTcpSocket& socket, const Step& step, const QByteArray& bytes);

    const QList<Step> _steps;
    const Certificate _certificate;
    quint16 _port = 0;
    std::atomic<bool> _stopping{false};
    int _connections = 0;
    int _unexpectedRequests = 0;
    QList<Request> _requests;
    QList<Request> _brokenOff;
    std::thread _thread;
};

}  // namespace tests
