#include "tests/fakes/ScriptedServer.h"

#ifdef _WIN32
#include <winsock2.h>
#else
#include <sys/socket.h>
#endif

#include <QFile>
#include <QSslKey>
#include <QSslSocket>
#include <QTcpServer>
#include <QTcpSocket>
#include <chrono>
#include <future>
#include <memory>

#include "tests/fakes/QtCompat.h"

namespace tests {

namespace {

// How often a waiting server looks whether it is to stop.
const int WaitMilliseconds = 10;

class ListeningServer : public QTcpServer {
public:
    explicit ListeningServer(const ScriptedServer::Certificate& certificate) : _certificate(certificate) {}

protected:
    void incomingConnection(SocketDescriptor descriptor) override {
        if (_certificate.certificateFile.isEmpty()) {
            auto* socket = new QTcpSocket(this);
            socket->setSocketDescriptor(descriptor);
            addPendingConnection(socket);
            return;
        }
        auto* socket = new QSslSocket(this);
        socket->setSocketDescriptor(descriptor);
        socket->setLocalCertificate(_certificate.certificateFile);
        QFile key(_certificate.keyFile);
        key.open(QIODevice::ReadOnly);
        socket->setPrivateKey(QSslKey(&key, CertificateKeyAlgorithm));
        socket->startServerEncryption();
        addPendingConnection(socket);
    }

private:
    const ScriptedServer::Certificate _certificate;
};

void Reset(QTcpSocket& socket) {
    const linger atOnce = {1, 0};
    setsockopt(static_cast<int>(socket.socketDescriptor()), SOL_SOCKET, SO_LINGER,
               reinterpret_cast<const char*>(&atOnce), sizeof(atOnce));
    socket.abort();
}

}  // namespace

ScriptedServer::ScriptedServer(const QList<Step>& steps, const Certificate& certificate)
    : _steps(steps), _certificate(certificate) {
    std::promise<quint16> port;
    std::future<quint16> listening = port.get_future();
    _thread = std::thread([this, &port] {
        ListeningServer server(_certificate);
        server.listen(QHostAddress::LocalHost);
        port.set_value(server.serverPort());
        while (!_stopping) {
            // Two that come at once count as one new connection.
            if (server.hasPendingConnections() || server.waitForNewConnection(WaitMilliseconds)) {
                const std::unique_ptr<QTcpSocket> socket(server.nextPendingConnection());
                ++_connections;
                _ServeConnection(*socket);
            }
        }
    });
    _port = listening.get();
}

ScriptedServer::Step ScriptedServer::Answer(const QByteArray& bytes, Ending ending) {
    Step step;
    step.answer = [bytes](const Request&) { return bytes; };
    step.ending = ending;
    return step;
}

ScriptedServer::~ScriptedServer() {
    Stop();
}

QUrl ScriptedServer::Url(const QString& path) const {
    const QString scheme = _certificate.certificateFile.isEmpty() ? QStringLiteral("http") : QStringLiteral("https");
    return QUrl(QStringLiteral("%1://127.0.0.1:%2%3").arg(scheme).arg(_port).arg(path));
}

void ScriptedServer::Stop() {
    _stopping = true;
    if (_thread.joinable()) {
        _thread.join();
    }
}

void ScriptedServer::_ServeConnection(QTcpSocket& socket) {
    Request request;
    while (_ReadHead(socket, request)) {
        if (_requests.size() == _steps.size()) {
            ++_unexpectedRequests;
            return;
        }
        request.connection = _connections;
        const Step& step = _steps[_requests.size()];
        if (step.takesBody && !_ReadBody(socket, step, request)) {
            _brokenOff.append(request);
            return;
        }
        _requests.append(request);
        _Send(socket, step, step.answer(request));
        switch (step.ending) {
            case Ending::KeepOpen:
                break;
            case Ending::Close:
                socket.disconnectFromHost();
                if (socket.state() != QAbstractSocket::UnconnectedState) {
                    socket.waitForDisconnected(1000);
                }
                return;
            case Ending::Reset:
                Reset(socket);
                return;
            case Ending::Stall:
                while (_WaitForBytes(socket)) {
                    socket.readAll();
                }
                return;
        }
    }
}

bool ScriptedServer::_ReadHead(QTcpSocket& socket, Request& request) {
    QByteArray head;
    while (!head.endsWith("\r\n\r\n")) {
        if (socket.bytesAvailable() == 0 && !_WaitForBytes(socket)) {
            return false;
        }
        head += socket.readLine();
    }
    request = Request();
    const QList<QByteArray> lines = head.trimmed().split('\n');
    const QList<QByteArray> words = lines.at(0).trimmed().split(' ');
    request.method = words.value(0);
    request.target = words.value(1);
    for (const QByteArray& line : lines.mid(1)) {
        const int colon = line.indexOf(':');
        request.headers.insert(line.left(colon).toLower(), line.mid(colon + 1).trimmed());
    }
    return true;
}

bool ScriptedServer::_ReadBody(QTcpSocket& socket, const Step& step, Request& request) {
    if (step.saysGoOn && request.headers.value("expect") == "100-continue") {
        socket.write("HTTP/1.1 100 Continue\r\n\r\n");
        socket.flush();
    }
    const int bodySize = request.headers.value("content-length").toInt();
    while (request.body.size() < bodySize) {
        if (socket.bytesAvailable() == 0 && !_WaitForBytes(socket)) {
            return false;
        }
        request.body += socket.read(bodySize - request.body.size());
    }
    return true;
}

bool ScriptedServer::_WaitForBytes(QTcpSocket& socket) {
    while (!_stopping && socket.state() == QAbstractSocket::ConnectedState) {
        if (socket.waitForReadyRead(WaitMilliseconds)) {
            return true;
        }
    }
    return false;
}

void ScriptedServer::_Send(QTcpSocket& socket, const Step& step, const QByteArray& bytes) {
    const int pieceSize = step.millisecondsPerByte == 0 ? bytes.size() : 1;
    for (int sent = 0; sent < bytes.size() && !_stopping; sent += pieceSize) {
        socket.write(bytes.mid(sent, pieceSize));
        while (socket.bytesToWrite() > 0 && socket.waitForBytesWritten(1000)) {
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(step.millisecondsPerByte));
    }
}

}  // namespace tests
