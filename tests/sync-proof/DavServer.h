#pragma once

#include <map>
#include <memory>
#include <ostream>
#include <string>

namespace syncproof {

enum class ServerKind {
    StandIn,
    Apache,
    /// Knows no conditions.
    Rclone
};

/// For the names of tests.
std::ostream& operator<<(std::ostream& stream, ServerKind kind);

/// A WebDAV server that serves a folder on 127.0.0.1 as long as this object lives.
class IDavServer {
public:
    virtual ~IDavServer() = default;
    virtual int Port() const = 0;
    /// What it had to say.
    virtual std::string Log() const = 0;
};

/// Its clock is `clockShift` seconds ahead; rclone's is not, for it asks the kernel. Throws std::runtime_error when it
/// does not serve.
std::unique_ptr<IDavServer> StartDavServer(ServerKind kind, const std::string& folder, int clockShift = 0);

/// The environment of a program whose clock is `seconds` ahead.
std::map<std::string, std::string> WithClockShift(int seconds);

}  // namespace syncproof
