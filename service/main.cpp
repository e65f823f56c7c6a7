#include <libxml/parser.h>
#include <pthread.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <optional>

#include "service/http/HttpServer.h"
#include "service/protocol/ServerPath.h"
#include "service/protocol/XmlText.h"
#include "service/tree/Seeding.h"
#include "service/tree/ServiceTree.h"

namespace {

constexpr int WrongUsage = 2;
constexpr const char* PasswordVariable = "OVSYNC_SERVICE_PASSWORD";

struct Arguments {
    std::string directory;
    std::uint16_t port = 8080;
    std::optional<std::string> user;
    std::vector<std::string> faults;
    std::int64_t seedFiles = -1;
    std::int64_t seedFolders = 0;
    std::string seedFolder = "seeded";
    bool isVerbose = false;
};

void Describe(CLI::App& app, Arguments& arguments) {
    app.add_option("DIR", arguments.directory, "The folder to serve")->required();
    app.add_option("--port", arguments.port, "The port; 0 takes any that is free")
        ->check(CLI::Range(0, 65535))
        ->capture_default_str();
    app.add_option(
        "--user", arguments.user,
        std::string("Let in only this user, with the password in the environment variable ") + PasswordVariable);
    app.add_option("--fault", arguments.faults,
                   "Misbehave: KIND[=ARGUMENT][,method=METHOD][,request=NUMBER]. Can be repeated.\n"
                   "Instead of carrying out the request: hang, reset, redirect=STATUS, error-page, status=CODE.\n"
                   "After it was carried out: cut=BYTES, reset=BYTES, content-type=TYPE, error-in-body=BYTES, drip, "
                   "content-length=DIFFERENCE.\n"
                   "METHOD limits it to one HTTP method, NUMBER to that one of the requests (from 1).")
        ->take_all()
        ->allow_extra_args(false);
    constexpr std::int64_t most = 10000000;
    CLI::Option* seedFiles =
        app.add_option("--seed-files", arguments.seedFiles, "First fill a folder with this many small files")
            ->check(CLI::Range(std::int64_t{0}, most));
    app.add_option("--seed-folders", arguments.seedFolders,
                   "Spread them over this many folders below it, in two levels; 0 leaves them in it")
        ->check(CLI::Range(std::int64_t{0}, most))
        ->needs(seedFiles)
        ->capture_default_str();
    app.add_option("--seed-folder", arguments.seedFolder, "The name of the folder that --seed-files fills")
        ->capture_default_str();
    app.add_flag("--verbose", arguments.isVerbose, "Write a line for each request to standard error");
    app.set_version_flag("--version", std::string("ovsync-service ") + OVSYNC_VERSION);
    app.footer("The service answers on 127.0.0.1 only. It keeps what it knows about the files in DIR/.ovsync-service.");
}

// What CLI11 cannot check. Throws std::invalid_argument.
service::http::HttpServer::Options ToOptions(const Arguments& arguments) {
    service::http::HttpServer::Options options;
    options.port = arguments.port;
    options.isVerbose = arguments.isVerbose;
    if (arguments.user) {
        options.user = *arguments.user;
        if (options.user.empty() || options.user.find(':') != std::string::npos ||
            !service::protocol::IsValidUtf8(options.user)) {
            throw std::invalid_argument("--user: the name is empty, has a ':' or is not UTF-8");
        }
        const char* password = std::getenv(PasswordVariable);
        if (password == nullptr || *password == '\0') {
            throw std::invalid_argument(std::string("--user needs the password in the environment variable ") +
                                        PasswordVariable);
        }
        options.password = password;
    }
    for (const std::string& fault : arguments.faults) {
        options.faults.push_back(service::http::Fault::Parse(fault));
    }
    if (!service::protocol::IsSegment(arguments.seedFolder) || service::protocol::IsReserved(arguments.seedFolder)) {
        throw std::invalid_argument("--seed-folder: '" + arguments.seedFolder + "' cannot be the name of a folder");
    }
    return options;
}

void Serve(const Arguments& arguments, const service::http::HttpServer::Options& options) {
    // Blocked before any other thread begins, so that only this one meets them.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    xmlInitParser();

    service::tree::ServiceTree tree(arguments.directory, options.user.empty() ? "anonymous" : options.user);
    if (arguments.seedFiles >= 0) {
        service::tree::Seed(tree, arguments.directory,
                            {arguments.seedFolder, arguments.seedFiles, arguments.seedFolders});
    }
    const service::http::HttpServer server(tree, options);
    std::cout << "Serving " << arguments.directory << " on http://127.0.0.1:" << server.Port() << "/" << std::endl;
    int received = 0;
    sigwait(&stopSignals, &received);
}

}  // namespace

int main(int argc, char** argv) try {
    CLI::App app("Serves a folder over HTTP and WebDAV, with the Drovane service's own properties.", "ovsync-service");
    Arguments arguments;
    Describe(app, arguments);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? EXIT_SUCCESS : WrongUsage;
    }
    Serve(arguments, ToOptions(arguments));
    return EXIT_SUCCESS;
} catch (const std::invalid_argument& error) {
    std::cerr << "ovsync-service: " << error.what() << "\n";
    return WrongUsage;
} catch (const std::exception& error) {
    std::cerr << "ovsync-service: " << error.what() << "\n";
    return EXIT_FAILURE;
}
