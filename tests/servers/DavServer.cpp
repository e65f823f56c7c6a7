#include "tests/servers/DavServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <pwd.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "tests/service/CapturedText.h"
#include "tests/service/ChildProcess.h"
#include "tests/service/HttpClient.h"
#include "tests/service/ServiceProcess.h"
#include "tests/service/TemporaryFolder.h"

namespace servers {
namespace {

using Words = std::vector<std::string>;
using Environment = std::map<std::string, std::string>;
using service::test::TemporaryFolder;

class StandIn : public IDavServer {
public:
    StandIn(const std::string& folder, int clockShift, int port)
        : _process({folder, "--verbose", "--port", std::to_string(port)}, WithClockShift(clockShift)) {}
    int Port() const override { return _process.Port(); }
    std::string Log() const override { return _process.Log(); }
    void Signal(int signal) override { _process.Signal(signal); }

private:
    service::test::ServiceProcess _process;
};

bool IsFree(int port) {
    const int descriptor = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<uint16_t>(port));
    const bool isBound = bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    close(descriptor);
    return isBound;
}

/// `timeout` passes a signal on to all processes that the program has, which PHP does not do, and ends them even when
/// this process was killed.
Words OutlivingNobody(const Words& program) {
    Words words{"--kill-after=10", "1800"};
    words.insert(words.end(), program.begin(), program.end());
    return words;
}

/// The configuration in configurations/`name` for a server that listens at `port`, serves `folder` and keeps what is
/// its own in `work`.
std::string Configuration(const std::string& name, int port, const std::string& folder, const std::string& work) {
    std::string text = service::test::ReadFile(std::string(CONFIGURATIONS "/") + name).value();
    const Environment values{{"@PORT@", std::to_string(port)}, {"@FOLDER@", folder}, {"@WORK@", work}};
    for (const auto& [placeholder, value] : values) {
        for (auto at = text.find(placeholder); at != std::string::npos; at = text.find(placeholder, at)) {
            text.replace(at, placeholder.size(), value);
        }
    }
    return text;
}

void GiveTo(const std::string& user, const std::string& folder) {
    const passwd* const owner = getpwnam(user.c_str());
    if (owner == nullptr || chown(folder.c_str(), owner->pw_uid, owner->pw_gid) != 0) {
        throw std::runtime_error(folder + " cannot be given to " + user);
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        // Somebody may be changing the folder meanwhile.
        if (lchown(entry.path().c_str(), owner->pw_uid, owner->pw_gid) != 0 && errno != ENOENT) {
            throw std::runtime_error(entry.path().string() + " cannot be given to " + user);
        }
    }
}

/// A program that is told its port.
class ForeignServer : public IDavServer {
public:
    ForeignServer(ServerKind kind, const std::string& folder, Environment environment, int port) : _port(port) {
        const Words program = _Program(kind, folder, environment);
        _process = std::make_unique<service::test::ChildProcess>("/usr/bin/timeout", OutlivingNobody(program),
                                                                 environment, _log.Descriptor(), _log.Descriptor());
        service::test::HttpClient client(_port);
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (client.Send("OPTIONS", "/").status == 0) {
            if (std::chrono::steady_clock::now() > deadline) {
                throw std::runtime_error(program.front() + " does not serve: " + Log());
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        // Apache makes its database of locks at the first change under a condition. Of several at once all but one
        // sleep for a second between the condition and the act; a server that has run before has no such second.
        if (kind == ServerKind::Apache || kind == ServerKind::ApacheByDefault) {
            client.Send("PUT", "/first", {"If-None-Match: *"}, "x");
            client.Send("DELETE", "/first");
            if (!std::filesystem::exists(_work / "locks")) {
                throw std::runtime_error("Apache has made no database of locks: " + Log());
            }
        }
    }
    ~ForeignServer() override {
        _process->Signal(SIGTERM);
        _process->Wait();
    }
    ForeignServer(const ForeignServer&) = delete;
    ForeignServer& operator=(const ForeignServer&) = delete;

    int Port() const override { return _port; }
    std::string Log() const override { return _log.Text(); }
    void Signal(int signal) override { _process->SignalGroup(signal); }

private:
    Words _Program(ServerKind kind, const std::string& folder, Environment& environment) const {
        const std::string address = "127.0.0.1:" + std::to_string(_port);
        switch (kind) {
            case ServerKind::Lighttpd:
                return {"/usr/sbin/lighttpd", "-D", "-f", _Configure("lighttpd.conf", folder)};
            case ServerKind::Nginx:
                return {"/usr/sbin/nginx", "-e", "stderr", "-c", _Configure("nginx.conf", folder)};
            case ServerKind::SabreDav:
            case ServerKind::SabreTags:
                // One process answers one request at a time, on one connection.
                environment["PHP_CLI_SERVER_WORKERS"] = "8";
                return {"/usr/bin/php", "-S", address,
                        _Configure(kind == ServerKind::SabreDav ? "sabre-dav.php" : "sabre-tags.php", folder)};
            case ServerKind::Rclone:
                return {"/usr/bin/rclone", "serve", "webdav", folder, "--addr", address, "--config", "/dev/null"};
            default:
                return _Apache(kind, folder);
        }
    }

    Words _Apache(ServerKind kind, const std::string& folder) const {
        Words words{"/usr/sbin/apache2", "-DFOREGROUND", "-f", _Configure("apache.conf", folder)};
        if (kind == ServerKind::Apache) {
            words.emplace_back("-DINFINITY");
        }
        if (geteuid() == 0) {
            words.emplace_back("-DROOT");
            GiveTo("www-data", folder);
            GiveTo("www-data", _work.Path());
        }
        return words;
    }

    /// The path of its configuration.
    std::string _Configure(const std::string& name, const std::string& folder) const {
        _work.Write(name, Configuration(name, _port, folder, _work.Path()));
        return _work / name;
    }

    const int _port;
    const TemporaryFolder _work;
    service::test::CapturedText _log;
    std::unique_ptr<service::test::ChildProcess> _process;
};

}  // namespace

std::ostream& operator<<(std::ostream& stream, ServerKind kind) {
    static const std::map<ServerKind, const char*> names{
        {ServerKind::StandIn, "StandIn"},
        {ServerKind::Apache, "Apache"},
        {ServerKind::ApacheByDefault, "ApacheByDefault"},
        {ServerKind::Lighttpd, "Lighttpd"},
        {ServerKind::Nginx, "Nginx"},
        {ServerKind::Rclone, "Rclone"},
        {ServerKind::SabreDav, "SabreDav"},
        {ServerKind::SabreTags, "SabreTags"},
    };
    return stream << names.at(kind);
}

int FreePort() {
    // The system's own choice begins above.
    std::uniform_int_distribution<int> ports(15000, 32000);
    std::random_device random;
    for (int i = 0; i < 1000; ++i) {
        if (const int port = ports(random); IsFree(port)) {
            return port;
        }
    }
    throw std::runtime_error("There is no free port");
}

std::unique_ptr<IDavServer> StartDavServer(ServerKind kind, const std::string& folder, int clockShift, int port) {
    if (kind == ServerKind::StandIn) {
        return std::make_unique<StandIn>(folder, clockShift, port);
    }
    return std::make_unique<ForeignServer>(kind, folder, WithClockShift(clockShift), port);
}

std::map<std::string, std::string> WithClockShift(int seconds) {
    if (seconds == 0) {
        return {};
    }
    return {{"LD_PRELOAD", CLOCK_SHIFT_LIBRARY},
            {"CLOCK_SHIFT", std::to_string(seconds)},
            {"ASAN_OPTIONS", "verify_asan_link_order=0"}};
}

}  // namespace servers
