#include "tests/service/RawConnection.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>

namespace service::test {

RawConnection::RawConnection(int port) : _socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(_socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        throw std::runtime_error("Cannot connect");
    }
}

RawConnection::~RawConnection() {
    close(_socket);
}

void RawConnection::Send(const std::string& bytes) {
    if (send(_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(bytes.size())) {
        throw std::runtime_error("Cannot send");
    }
}

std::string RawConnection::Read(int milliseconds, std::size_t enough) {
    std::string text;
    std::array<char, 65536> buffer{};
    pollfd readable{_socket, POLLIN, 0};
    _ending = Ending::Open;
    while (text.size() < enough && poll(&readable, 1, milliseconds) == 1) {
        const ssize_t count = recv(_socket, buffer.data(), buffer.size(), 0);
        if (count <= 0) {
            _ending = count < 0 && errno == ECONNRESET ? Ending::Reset : Ending::Closed;
            break;
        }
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return text;
}

}  // namespace service::test
