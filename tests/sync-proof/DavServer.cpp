#include "tests/sync-proof/DavServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <pwd.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "tests/service/CapturedText.h"
#include "tests/service/ChildProcess.h"
#include "tests/service/HttpClient.h"
#include "tests/service/ServiceProcess.h"
#include "tests/service/TemporaryFolder.h"

namespace syncproof {
namespace {

using Words = std::vector<std::string>;

class StandIn : public IDavServer {
public:
    StandIn(const std::string& folder, int clockShift) : _process({folder}, WithClockShift(clockShift)) {}
    int Port() const override { return _process.Port(); }
    std::string Log() const override { return _process.Log(); }

private:
    service::test::ServiceProcess _process;
};

/// For a server that cannot choose a free port itself.
int FreePort() {
    const int descriptor = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* const any = reinterpret_cast<sockaddr*>(&address);
    const bool isBound = bind(descriptor, any, length) == 0 && getsockname(descriptor, any, &length) == 0;
    close(descriptor);
    if (!isBound) {
        throw std::runtime_error("There is no free port");
    }
    return ntohs(address.sin_port);
}

/// A program that is told its port.
class ForeignServer : public IDavServer {
public:
    ForeignServer(int port, const std::string& program, const Words& arguments, int clockShift)
        : _port(port), _process(program, arguments, WithClockShift(clockShift), _log.Descriptor(), _log.Descriptor()) {
        service::test::HttpClient client(port);
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (client.Send("OPTIONS", "/").status == 0) {
            if (std::chrono::steady_clock::now() > deadline) {
                throw std::runtime_error(program + " does not serve: " + Log());
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }
    ~ForeignServer() override {
        _process.Signal(SIGTERM);
        _process.Wait();
    }
    ForeignServer(const ForeignServer&) = delete;
    ForeignServer& operator=(const ForeignServer&) = delete;

    int Port() const override { return _port; }
    std::string Log() const override { return _log.Text(); }

private:
    const int _port;
    service::test::CapturedText _log;
    service::test::ChildProcess _process;
};

std::string ApacheConfiguration(const std::string& folder, const std::string& work, int port) {
    std::ostringstream text;
    for (const char* module : {"mpm_event", "authz_core", "mime", "dav", "dav_fs"}) {
        text << "LoadModule " << module << "_module /usr/lib/apache2/modules/mod_" << module << ".so\n";
    }
    text << "ServerRoot " << work << "\nPidFile " << work << "/pid\nDavLockDB " << work << "/locks\n"
         << "ServerName localhost\nListen 127.0.0.1:" << port << "\nTypesConfig /dev/null\nErrorLog /dev/stderr\n"
         << R"(LogFormat "%{%T}t.%{msec_frac}t %D us: %m %U %>s, If-Match %{If-Match}i, ETag %{ETag}o" each)"
         << "\nCustomLog /dev/stderr each\n"
         << "DocumentRoot " << folder << "\n<Directory " << folder << ">\n"
         << "Dav On\nDavDepthInfinity On\nRequire all granted\n</Directory>\n";
    if (geteuid() == 0) {
        // It refuses to serve as root.
        text << "User www-data\nGroup www-data\n";
    }
    return text.str();
}

void GiveTo(const std::string& user, const std::string& folder) {
    const passwd* const owner = getpwnam(user.c_str());
    if (owner == nullptr || chown(folder.c_str(), owner->pw_uid, owner->pw_gid) != 0) {
        throw std::runtime_error(folder + " cannot be given to " + user);
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        static_cast<void>(lchown(entry.path().c_str(), owner->pw_uid, owner->pw_gid));
    }
}

class Apache : public IDavServer {
public:
    Apache(const std::string& folder, int clockShift) {
        const int port = FreePort();
        const std::string configuration = _work / "apache.conf";
        std::ofstream(configuration) << ApacheConfiguration(folder, _work.Path(), port);
        if (geteuid() == 0) {
            GiveTo("www-data", folder);
            GiveTo("www-data", _work.Path());
        }
        _server = std::make_unique<ForeignServer>(port, "/usr/sbin/apache2", Words{"-f", configuration, "-DFOREGROUND"},
                                                  clockShift);
    }
    int Port() const override { return _server->Port(); }
    std::string Log() const override { return _server->Log(); }

private:
    const service::test::TemporaryFolder _work;
    std::unique_ptr<ForeignServer> _server;
};

}  // namespace

std::ostream& operator<<(std::ostream& stream, ServerKind kind) {
    return stream << (kind == ServerKind::StandIn ? "StandIn" : kind == ServerKind::Apache ? "Apache" : "Rclone");
}

std::unique_ptr<IDavServer> StartDavServer(ServerKind kind, const std::string& folder, int clockShift) {
    if (kind == ServerKind::StandIn) {
        return std::make_unique<StandIn>(folder, clockShift);
    }
    if (kind == ServerKind::Apache) {
        return std::make_unique<Apache>(folder, clockShift);
    }
    const int port = FreePort();
    const Words arguments{"serve",    "webdav",   folder, "--addr", "127.0.0.1:" + std::to_string(port),
                          "--config", "/dev/null"};
    return std::make_unique<ForeignServer>(port, "/usr/bin/rclone", arguments, clockShift);
}

std::map<std::string, std::string> WithClockShift(int seconds) {
    if (seconds == 0) {
        return {};
    }
    return {{"LD_PRELOAD", CLOCK_SHIFT_LIBRARY},
            {"CLOCK_SHIFT", std::to_string(seconds)},
            {"ASAN_OPTIONS", "verify_asan_link_order=0"}};
}

}  // namespace syncproof
