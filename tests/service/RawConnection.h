#pragma once

#include <cstddef>
#include <string>

namespace service::test {

/// A bare TCP connection to a service, to see what really comes over it.
class RawConnection {
public:
    enum class Ending { Open, Closed, Reset };

    explicit RawConnection(int port);
    ~RawConnection();
    RawConnection(const RawConnection&) = delete;
    RawConnection& operator=(const RawConnection&) = delete;

    void Send(const std::string& bytes);

    /// Reads until the connection ends, `enough` bytes are there, or nothing comes for `milliseconds`.
    std::string Read(int milliseconds = 10000, std::size_t enough = static_cast<std::size_t>(-1));

    /// How the last Read() ended.
    Ending End() const { return _ending; }

private:
    int _socket;
    Ending _ending = Ending::Open;
};

}  // namespace service::test
