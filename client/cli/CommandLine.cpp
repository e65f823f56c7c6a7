#include "client/cli/CommandLine.h"

#include <CLI/CLI.hpp>
#include <chrono>
#include <exception>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "client/cli/Connection.h"
#include "client/cli/ListCommand.h"
#include "client/cli/StatCommand.h"
#include "client/cli/UsageError.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace cli {

namespace {

using sync::http::HttpException;

const char* const Footer =
    "Exit status: 0 done, 1 the service said no, 2 wrong usage, 3 the service could not be reached or understood.\n"
    "The password of a user comes from the environment variable OVSYNC_PASSWORD, from ~/.netrc or from a prompt.\n"
    "Proxies come from http_proxy, https_proxy, all_proxy and no_proxy.";

/// What the options of a command write to.
struct Arguments {
    std::string url;
    std::string user;
    std::string caFile;
    double silenceLimit = 60;
    bool isLong = false;
    bool isJson = false;

    ConnectionOptions Connecting() const {
        ConnectionOptions options;
        options.user = QString::fromStdString(user);
        options.session.caFile = QString::fromStdString(caFile);
        options.session.silenceLimit =
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::duration<double>(silenceLimit));
        return options;
    }
};

CLI::App* AddCommand(CLI::App& app, const char* name, const char* description, const char* urlDescription,
                     Arguments& arguments) {
    CLI::App* const command = app.add_subcommand(name, description);
    command->add_option("URL", arguments.url, urlDescription)->required();
    command->add_option("-u,--user", arguments.user, "Name to log in with")->type_name("USER");
    command->add_flag("--json", arguments.isJson, "Print JSON");
    command->add_option("--ca-file", arguments.caFile, "Trust the PEM certificates in FILE in place of the system's")
        ->type_name("FILE")
        ->check(CLI::ExistingFile);
    command
        ->add_option("--silence-limit", arguments.silenceLimit,
                     "Give up when nothing was heard for so many SECONDS (60 unless given)")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.001, 86400.0));
    command->footer(Footer);
    return command;
}

void Complain(const std::string& message) {
    std::cerr << "ovsync: " << message << '\n';
}

}  // namespace

ExitCode RunCommandLine(int argc, const char* const* argv) {
    std::optional<Connection> connection;
    try {
        CLI::App app("Lists and looks up what lies on a Drovane service or any other WebDAV server.", "ovsync");
        app.set_version_flag("--version", std::string("ovsync ") + OVSYNC_VERSION);
        app.require_subcommand(1);
        app.footer(Footer);

        Arguments arguments;
        CLI::App* const list = AddCommand(app, "ls", "Lists the files of a folder, one name a line, in name order.",
                                          "The folder, for example http://host/folder/", arguments);
        CLI::Option* const isLong = list->add_flag("-l,--long", arguments.isLong,
                                                   "Print the size in bytes, the date and the version before the name");
        isLong->excludes(list->get_option("--json"));
        const CLI::App* const stat = AddCommand(app, "stat", "Prints what the service knows of one file.",
                                                "The file, for example http://host/folder/file.txt", arguments);
        try {
            app.parse(argc, argv);
        } catch (const CLI::ParseError& e) {
            std::ostringstream errors;
            const bool isDone = app.exit(e, std::cout, errors) == 0;
            if (!isDone) {
                const std::vector<std::string> unknown = app.remaining();
                Complain((unknown.empty() ? "" : unknown.front() + ": unknown command. ") + errors.str());
            }
            return isDone ? Done : WrongUsage;
        }

        const Location location = Location::FromUrl(QString::fromStdString(arguments.url));
        connection.emplace(location, arguments.Connecting());
        Output output;
        if (stat->parsed()) {
            ShowFile(*connection, location, arguments.isJson, output);
        } else {
            const ListFormat plain = arguments.isLong ? ListFormat::Long : ListFormat::Names;
            ListFolder(*connection, location, arguments.isJson ? ListFormat::Json : plain, output);
        }
        output.Flush();
        return Done;
    } catch (const UsageError& e) {
        Complain(e.what());
        return WrongUsage;
    } catch (const HttpException& e) {
        Complain(e.what());
        Complain("The answer was " + connection->LastAnswer().toStdString());
        if (e.StatusCode() == 401) {
            Complain("Give a user name with -u.");
        }
        return Refused;
    } catch (const std::exception& e) {
        Complain(e.what());
        return Unreachable;
    }
}

}  // namespace cli
}  // namespace ovsync
