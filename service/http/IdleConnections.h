#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>

namespace service::http {

/// The connections over which no request is under way. When there are too many, the one that has been idle for longest
/// is closed, so that clients that keep theirs open do not keep others out. Thread-safe.
class IdleConnections {
public:
    /// Connections are told apart by an address that is theirs alone.
    using Connection = const void*;

    explicit IdleConnections(std::size_t most) : _most(most) {}

    /// A connection was made; `socket` stays open until Closed() returns. It is idle.
    void Opened(Connection connection, int socket);
    /// A request begins.
    void Busy(Connection connection);
    /// A request is over.
    void Idle(Connection connection);
    void Closed(Connection connection);

private:
    struct Known {
        int socket = -1;
        // Its key in _idle; 0 when it is not there.
        std::uint64_t turn = 0;
    };

    void _Forget(std::uint64_t& turn);
    void _Add(Connection connection);

    std::size_t _most;
    std::mutex _mutex;
    std::map<Connection, Known> _connections;
    // In the order in which they became idle.
    std::map<std::uint64_t, Connection> _idle;
    std::uint64_t _lastTurn = 0;
};

}  // namespace service::http
