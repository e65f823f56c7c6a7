#pragma once

#include <map>
#include <memory>
#include <ostream>
#include <string>

namespace servers {

enum class ServerKind {
    StandIn,
    Apache,
    /// As it is unless told otherwise: refuses to list a whole tree at once.
    ApacheByDefault,
    Lighttpd,
    Nginx,
    /// Knows no conditions.
    Rclone,
    /// Lists one level when it is asked for a whole tree.
    SabreDav,
    /// Refuses that, but gives collections ids, and entity tags that change with all that lies below. Writes each
    /// request into its log.
    SabreTags
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
    /// To all of its processes.
    virtual void Signal(int signal) = 0;
};

/// A port at which nothing listens, and which the system gives to nobody who does not ask for it.
int FreePort();

/// The clock of the stand-in and of Apache is `clockShift` seconds ahead; for others it has to be 0, and rclone asks
/// the kernel. Without a `port` it chooses one. Throws std::runtime_error when the server does not serve.
std::unique_ptr<IDavServer> StartDavServer(ServerKind kind, const std::string& folder, int clockShift = 0,
                                           int port = FreePort());

/// The environment of a program whose clock is `seconds` ahead.
std::map<std::string, std::string> WithClockShift(int seconds);

}  // namespace servers
