#include "service/http/IdleConnections.h"

#include <sys/socket.h>

namespace service::http {

void IdleConnections::Opened(Connection connection, int socket) {
    const std::lock_guard lock(_mutex);
    _connections[connection].socket = socket;
    _Add(connection);
}

void IdleConnections::Busy(Connection connection) {
    const std::lock_guard lock(_mutex);
    _Forget(_connections[connection].turn);
}

void IdleConnections::Idle(Connection connection) {
    const std::lock_guard lock(_mutex);
    _Forget(_connections[connection].turn);
    _Add(connection);
}

void IdleConnections::Closed(Connection connection) {
    const std::lock_guard lock(_mutex);
    _Forget(_connections[connection].turn);
    _connections.erase(connection);
}

void IdleConnections::_Forget(std::uint64_t& turn) {
    _idle.erase(turn);
    turn = 0;
}

void IdleConnections::_Add(Connection connection) {
    _connections[connection].turn = ++_lastTurn;
    _idle.emplace(_lastTurn, connection);
    if (_idle.size() > _most) {
        Known& oldest = _connections[_idle.begin()->second];
        // Its own thread notices that and closes it.
        shutdown(oldest.socket, SHUT_RDWR);
        _Forget(oldest.turn);
    }
}

}  // namespace service::http
