#include "client/agent/AgentClient.h"

#include "client/agent/AgentLock.h"
#include "client/agent/StatusServer.h"
#include "client/user/Places.h"

namespace ovsync {
namespace agent {

using user::RuntimeFolder;

namespace {

const int PatienceWithAgent = 5000;

}  // namespace

bool AgentClient::IsRunning() {
    return AgentLock(RuntimeFolder()).IsTaken();
}

bool AgentClient::Send(const QByteArray& request) {
    if (_socket.state() != QLocalSocket::ConnectedState) {
        _socket.connectToServer(StatusServer::PathIn(RuntimeFolder()));
        if (!_socket.waitForConnected(PatienceWithAgent)) {
            return false;
        }
    }
    _socket.write(request + '\n');
    return _socket.waitForBytesWritten(PatienceWithAgent);
}

std::optional<QByteArray> AgentClient::ReadLine(int milliseconds) {
    while (!_socket.canReadLine()) {
        if (!_socket.waitForReadyRead(milliseconds)) {
            return std::nullopt;
        }
    }
    return _socket.readLine();
}

}  // namespace agent
}  // namespace ovsync
