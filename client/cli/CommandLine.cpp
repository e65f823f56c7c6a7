#include "client/cli/CommandLine.h"
#include "client/wire/HttpStatus.h"

#include <log4cplus/logger.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <QTextCodec>
#include <algorithm>
#include <chrono>
#include <exception>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "client/cli/commands/AgentCommand.h"
#include "client/cli/commands/ListCommand.h"
#include "client/cli/commands/MakeFolderCommand.h"
#include "client/cli/commands/MoveCommand.h"
#include "client/cli/commands/PullCommand.h"
#include "client/cli/commands/PushCommand.h"
#include "client/cli/commands/RemoveCommand.h"
#include "client/cli/commands/SettingsCommand.h"
#include "client/cli/commands/SizeCommand.h"
#include "client/cli/commands/StatCommand.h"
#include "client/cli/commands/TrashCommand.h"
#include "client/cli/commands/TreeCommand.h"
#include "client/cli/commands/VersionCommand.h"
#include "client/cli/input/Credentials.h"
#include "client/cli/input/Interruption.h"
#include "client/cli/input/Location.h"
#include "client/cli/input/Refusal.h"
#include "client/cli/input/UsageError.h"
#include "client/cli/output/Complaint.h"
#include "client/cli/output/LoggedErrors.h"
#include "client/cli/output/Progress.h"
#include "client/cli/output/TerminalText.h"
#include "client/library/ServiceConnection.h"
#include "client/store/StoreError.h"
#include "client/sync/local/LocalError.h"
#include "client/sync/pass/SyncOptions.h"
#include "client/sync/pass/WrongFolder.h"
#include "client/wire/DateReader.h"
#include "host/core/SyncException.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace cli {

using commands::EmptyTrash;
using commands::ListFolder;
using commands::ListTrash;
using commands::MakeFolder;
using commands::MeasureTree;
using commands::MoveFolder;
using commands::Pull;
using commands::Push;
using commands::RemoveFolder;
using commands::RestoreFromTrash;
using commands::ShowAgent;
using commands::ShowResource;
using commands::ShowSettings;
using commands::ShowTree;
using commands::ShowVersions;
using commands::StartAgent;
using input::FindCredentials;
using input::Interruption;
using input::Location;
using input::Refusal;
using input::SyncArguments;
using input::UsageError;
using library::ServiceConnection;
using output::Complain;
using output::ExitCode;
using output::ListFormat;
using output::LoggedErrors;
using output::Output;
using output::Progress;
using output::ShownInErrors;
using output::TerminalText;
using wire::HttpStatus;

namespace {

using sync::http::HttpException;

const char* const Footer =
    "Exit status: 0 done, 1 the service said no or something was left to be done, 2 wrong usage, 3 the service could "
    "not "
    "be reached or understood.\n"
    "The password of a user comes from the environment variable OVSYNC_PASSWORD, from ~/.netrc or from a prompt.\n"
    "Proxies come from http_proxy, https_proxy, all_proxy and no_proxy.";

const int MostDays = 36500;

const char* const AgentFooter = "Exit status: 0 it runs, 1 it does not, 2 wrong usage.";

const char* const EntriesOption = "--max-listing-entries";
const char* const BytesOption = "--max-listing-bytes";
const int SilenceLimitsOfSlowness = 10;
const char* const TrashFooter =
    "Exit status: 0 done, 1 there is no such file in the trash, something is in the way or cannot be read or removed, "
    "or "
    "a pass has the folder open, 2 wrong usage.";

/// What the options of a command write to.
struct Arguments {
    std::string url;
    std::string destination;
    std::string directory;
    std::string path;
    std::optional<std::string> from;
    std::optional<std::string> to;
    std::optional<int> olderThan;
    std::string user;
    std::string caFile;
    std::string since;
    std::vector<std::string> excluded;
    double silenceLimit = 60;
    qint64 maxListingEntries = wire::ListingLimits().entries.value;
    qint64 maxListingBytes = wire::ListingLimits().bytes.value;
    bool isLong = false;
    bool isJson = false;
    bool withParents = false;
    bool deletes = false;
    std::string maxDelete;
    int daysKept = local::Trash::DefaultDays;
    bool isStrict = false;
    bool isDryRun = false;
    int transfers = pass::SyncOptions().transfers;

    wire::ConnectionSettings Connecting() const {
        wire::ConnectionSettings settings;
        settings.caFile = QString::fromStdString(caFile);
        settings.silenceLimit =
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::duration<double>(silenceLimit));
        settings.slownessLimit = SilenceLimitsOfSlowness * settings.silenceLimit;
        settings.listing.entries = {maxListingEntries, QString::fromLatin1(EntriesOption)};
        settings.listing.bytes = {maxListingBytes, QString::fromLatin1(BytesOption)};
        if (isatty(STDERR_FILENO) == 1) {
            const auto progress = std::make_shared<Progress>();
            settings.onProgress = [progress](qint64 bytes, bool isOver) { progress->Show(bytes, isOver); };
        }
        return settings;
    }

    ListFormat Format() const {
        const ListFormat plain = isLong ? ListFormat::Long : ListFormat::Names;
        return isJson ? ListFormat::Json : plain;
    }

    /// Throws UsageError when it is no time.
    QDateTime Since() const {
        QDateTime time = wire::ReadDate(since.data(), since.size());
        if (!since.empty() && !time.isValid()) {
            throw UsageError(QStringLiteral("--since \"%1\": this is no time of the form 2026-11-20T10:15:30Z or "
                                            "\"Fri, 20 Nov 2026 10:15:30 GMT\"")
                                 .arg(QString::fromStdString(since)));
        }
        return time;
    }

    static std::optional<QString> Given(const std::optional<std::string>& text) {
        return text ? std::make_optional(QString::fromStdString(*text)) : std::nullopt;
    }

    QStringList Excluded() const {
        QStringList globs;
        for (const std::string& glob : excluded) {
            globs.append(QString::fromStdString(glob));
        }
        return globs;
    }

    SyncArguments Syncing() const {
        return {QString::fromStdString(directory),
                Excluded(),
                deletes,
                isDryRun,
                isJson,
                transfers,
                isStrict,
                Limit(),
                daysKept};
    }

    /// Throws UsageError when it is no limit.
    pass::DeletionLimit Limit() const {
        if (maxDelete.empty()) {
            return {};
        }
        const std::optional<pass::DeletionLimit> limit = pass::DeletionLimit::Read(QString::fromStdString(maxDelete));
        if (!limit) {
            throw UsageError(
                QStringLiteral(
                    "--max-delete \"%1\": this is neither a number of files, as 12, nor a part of them, as 30%")
                    .arg(QString::fromStdString(maxDelete)));
        }
        return *limit;
    }
};

using Command = std::function<ExitCode(ServiceConnection&, const Location&, const Arguments&, Output&)>;
/// A command that is done when it does not throw.
using Action = std::function<void(ServiceConnection&, const Location&, const Arguments&, Output&)>;
/// A command that needs no service.
using LocalCommand = std::function<ExitCode(const Arguments&, Output&)>;

void ComplainOf(const std::exception& error) {
    Complain(QString::fromUtf8(error.what()));
}

/// `text` may have several lines.
void ComplainOfUsage(const std::string& text) {
    const QStringList lines = QString::fromStdString(text).trimmed().split(QLatin1Char('\n'));
    Complain(lines.first());
    for (const QString& line : lines.mid(1)) {
        std::cerr << ShownInErrors(line).toStdString() + '\n';
    }
}

/// The commands of the command line: how each is read into Arguments and what it then does.
class Commands {
public:
    Commands(CLI::App& app, Arguments& arguments) : _app(app), _arguments(arguments) {
        CLI::App* command =
            _Add("ls", "Lists the sub-folders and the files of a folder, one name a line, in name order.",
                 [](ServiceConnection& connection, const Location& location, const Arguments& given, Output& output) {
                     ListFolder(connection, location, given.Format(), output);
                 });
        _AddUrl(command, "URL", "The folder, for example http://host/folder/", _arguments.url);
        _AddLong(command);

        command = _Add("tree", "Lists everything below a folder, one path a line, in name order.",
                       [](ServiceConnection& connection, const Location& location, const Arguments& given,
                          Output& output) { ShowTree(connection, location, given.Since(), given.Format(), output); });
        _AddUrl(command, "URL", "The folder, for example http://host/folder/", _arguments.url);
        _AddLong(command);
        command
            ->add_option("--since", _arguments.since,
                         "List only if something changed since TIME, which an earlier listing gave as the service's")
            ->type_name("TIME");
        _treeCommands.push_back(command);

        command =
            _Add("du", "Counts the files below a folder and their bytes.",
                 [](ServiceConnection& connection, const Location& location, const Arguments& given, Output& output) {
                     MeasureTree(connection, location, given.Excluded(), given.isJson, output);
                 });
        _AddUrl(command, "URL", "The folder, for example http://host/folder/", _arguments.url);
        _AddExclude(command);
        _treeCommands.push_back(command);

        command = _Add("stat", "Prints what the service knows of one folder or file.",
                       [](ServiceConnection& connection, const Location& location, const Arguments& given,
                          Output& output) { ShowResource(connection, location, given.isJson, output); });
        _AddUrl(command, "URL", "The folder or file, for example http://host/folder/file.txt", _arguments.url);

        command =
            _Add("mkdir", "Creates a folder. One that is there already is left as it is.",
                 [](ServiceConnection& connection, const Location& location, const Arguments& given, Output& output) {
                     MakeFolder(connection, location, given.withParents, given.isJson, output);
                 });
        _AddUrl(command, "URL", "The new folder, for example http://host/folder/new/", _arguments.url);
        command->add_flag("-p,--parents", _arguments.withParents, "Create the missing folders above it too");

        command = _Add("rm", "Removes a folder and everything in it.",
                       [](ServiceConnection& connection, const Location& location, const Arguments& given,
                          Output& output) { RemoveFolder(connection, location, given.isJson, output); });
        _AddUrl(command, "URL", "The folder, for example http://host/folder/old/", _arguments.url);

        command =
            _Add("mv", "Moves a folder to where nothing is, on the same server.",
                 [](ServiceConnection& connection, const Location& location, const Arguments& given, Output& output) {
                     MoveFolder(connection, location, Location::FromUrl(QString::fromStdString(given.destination)),
                                given.isJson, output);
                 });
        _AddUrl(command, "FROM", "The folder, for example http://host/folder/", _arguments.url);
        _AddUrl(command, "TO", "Its new URL, for example http://host/elsewhere/name/", _arguments.destination);

        command = _AddCommand("pull", "Brings a local folder in step with a folder of the service.",
                              [](ServiceConnection& connection, const Location& location, const Arguments& given,
                                 Output& output) { return Pull(connection, location, given.Syncing(), output); });
        _AddUrl(command, "URL", "The folder, for example http://host/folder/", _arguments.url);
        _AddUrl(command, "DIR", "The local folder, made when it is missing", _arguments.directory);
        command->add_flag("--delete", _arguments.deletes,
                          "Delete here what the service has deleted, unless it was changed here");
        command
            ->add_option("--max-delete", _arguments.maxDelete,
                         "Delete nothing when it would be more than N files, or N% of them (half of ten and more, and "
                         "never all, unless given)")
            ->type_name("N");
        _AddPassOptions(command);

        command = _AddCommand("push", "Brings a folder of the service in step with a local folder; deletes nothing.",
                              [](ServiceConnection& connection, const Location& location, const Arguments& given,
                                 Output& output) { return Push(connection, location, given.Syncing(), output); });
        _AddUrl(command, "DIR", "The local folder, which must be there", _arguments.directory);
        _AddUrl(command, "URL", "The folder, for example http://host/folder/", _arguments.url);
        _AddPassOptions(command);

        command = _Add("settings", "Shows how synchronisation is tuned, and what the service publishes about it.",
                       [](ServiceConnection& connection, const Location& location, const Arguments& given,
                          Output& output) { ShowSettings(connection, location, given.isJson, output); });
        _AddUrl(command, "URL", "The service, for example http://host/", _arguments.url);

        command = _Add("version", "Shows the application's version and the newest one that the service offers.",
                       [](ServiceConnection& connection, const Location&, const Arguments& given, Output& output) {
                           ShowVersions(connection, given.isJson, output);
                       });
        _AddUrl(command, "URL", "The service, for example http://host/", _arguments.url);

        CLI::App* const agent =
            _app.add_subcommand("agent", "Looks after the application that stays and synchronises.");
        agent->require_subcommand(1);
        agent->footer(AgentFooter);
        _AddLocal(*agent, "status", "Says whether it runs.",
                  [](const Arguments& given, Output& output) { return ShowAgent(given.isJson, output); });
        _AddLocal(*agent, "start", "Starts it unless it runs already, and says whether it runs then.",
                  [](const Arguments& given, Output& output) { return StartAgent(given.isJson, output); });

        CLI::App* const trash =
            _app.add_subcommand("trash", "Looks after what pulls replaced or deleted in a local folder.");
        trash->require_subcommand(1);
        trash->footer(TrashFooter);
        command =
            _AddLocal(*trash, "list", "Lists it, a line each with time, size and path, in order of time and path.",
                      [](const Arguments& given, Output& output) {
                          ListTrash(QString::fromStdString(given.directory), given.isJson, output);
                          return ExitCode::Done;
                      });
        _AddUrl(command, "DIR", "The local folder", _arguments.directory);

        command = _AddLocal(*trash, "restore", "Brings a file back to its place, unless something is there.",
                            [](const Arguments& given, Output& output) {
                                RestoreFromTrash(QString::fromStdString(given.directory),
                                                 QString::fromStdString(given.path), Arguments::Given(given.from),
                                                 Arguments::Given(given.to), given.isJson, output);
                                return ExitCode::Done;
                            });
        _AddUrl(command, "DIR", "The local folder", _arguments.directory);
        _AddUrl(command, "PATH", "The file, as list shows it", _arguments.path);
        command
            ->add_option("--from", _arguments.from,
                         "Bring what was replaced or deleted at TIME, as list shows it (the newest unless given)")
            ->type_name("TIME");
        command->add_option("--to", _arguments.to, "Bring it to NAME, another path below DIR")->type_name("NAME");

        command = _AddLocal(*trash, "empty", "Removes it for good.", [](const Arguments& given, Output& output) {
            return EmptyTrash(QString::fromStdString(given.directory), given.olderThan, given.isJson, output);
        });
        _AddUrl(command, "DIR", "The local folder", _arguments.directory);
        command
            ->add_option("--older-than", _arguments.olderThan,
                         "Remove only what was replaced or deleted more than DAYS ago")
            ->type_name("DAYS")
            ->check(CLI::Range(0, MostDays));
    }

    /// What the command line, once it was read, asks for: null when that is a local command.
    const Command* Parsed() const { return _ParsedOf(_actions); }
    const LocalCommand* ParsedLocal() const { return _ParsedOf(_localActions); }

    /// Whether that needs a listing of a whole tree.
    bool ListsTree() const {
        return std::any_of(_treeCommands.begin(), _treeCommands.end(),
                           [](const CLI::App* command) { return command->parsed(); });
    }

private:
    CLI::App* _Add(const char* name, const char* description, const Action& action) {
        return _AddCommand(
            name, description,
            [action](ServiceConnection& connection, const Location& location, const Arguments& given, Output& output) {
                action(connection, location, given, output);
                return ExitCode::Done;
            });
    }

    CLI::App* _AddCommand(const char* name, const char* description, const Command& action) {
        CLI::App* const command = _app.add_subcommand(name, description);
        command->add_option("-u,--user", _arguments.user, "Name to log in with")->type_name("USER");
        _AddJson(command);
        command
            ->add_option("--ca-file", _arguments.caFile, "Trust the PEM certificates in FILE in place of the system's")
            ->type_name("FILE")
            ->check(CLI::ExistingFile);
        command
            ->add_option("--silence-limit", _arguments.silenceLimit,
                         "Give up when nothing was heard for so many SECONDS (60 unless given)")
            ->type_name("SECONDS")
            ->check(CLI::Range(0.001, 86400.0));
        _AddLimit(command, EntriesOption, "Refuse a listing of more than N entries (5000000 unless given)",
                  _arguments.maxListingEntries);
        _AddLimit(command, BytesOption, "Refuse a listing of more than N bytes, unpacked (4294967296 unless given)",
                  _arguments.maxListingBytes);
        command->footer(Footer);
        _actions.emplace(command, action);
        return command;
    }

    CLI::App* _AddLocal(CLI::App& group, const char* name, const char* description, const LocalCommand& action) {
        CLI::App* const command = group.add_subcommand(name, description);
        _AddJson(command);
        command->footer(group.get_footer());
        _localActions.emplace(command, action);
        return command;
    }

    template <typename Action>
    static const Action* _ParsedOf(const std::map<const CLI::App*, Action>& actions) {
        const auto parsed = std::find_if(actions.begin(), actions.end(),
                                         [](const auto& commandAndAction) { return commandAndAction.first->parsed(); });
        return parsed == actions.end() ? nullptr : &parsed->second;
    }

    void _AddJson(CLI::App* command) { command->add_flag("--json", _arguments.isJson, "Print JSON"); }

    static void _AddUrl(CLI::App* command, const char* name, const char* description, std::string& url) {
        command->add_option(name, url, description)->required();
    }

    static void _AddLimit(CLI::App* command, const char* name, const char* description, qint64& limit) {
        command->add_option(name, limit, description)->type_name("N")->check(CLI::PositiveNumber);
    }

    void _AddExclude(CLI::App* command) {
        command
            ->add_option(
                "--exclude", _arguments.excluded,
                "Leave out files, and folders with what lies in them, whose name GLOB matches; can be repeated")
            ->type_name("GLOB")
            ->expected(1)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    }

    void _AddPassOptions(CLI::App* command) {
        _AddExclude(command);
        command->add_flag("-n,--dry-run", _arguments.isDryRun, "Only say what would be done, and change nothing");
        command->add_option("-j,--transfers", _arguments.transfers, "Transfer up to N files at once (4 unless given)")
            ->type_name("N")
            ->check(CLI::Range(1, 64));
        command->add_flag("--strict", _arguments.isStrict,
                          "Exit with 1 also for links and other things that are never synced");
        command
            ->add_option(
                "--keep-deleted", _arguments.daysKept,
                "Keep what is replaced or deleted here for so many DAYS in DIR/.ovsync/trash (30 unless given)")
            ->type_name("DAYS")
            ->check(CLI::Range(0, MostDays));
        _treeCommands.push_back(command);
    }

    void _AddLong(CLI::App* command) {
        command
            ->add_flag("-l,--long", _arguments.isLong,
                       "Print the size in bytes, the date and the version before the name")
            ->excludes(command->get_option("--json"));
    }

    CLI::App& _app;
    Arguments& _arguments;
    std::map<const CLI::App*, Command> _actions;
    std::map<const CLI::App*, LocalCommand> _localActions;
    std::vector<const CLI::App*> _treeCommands;
};

/// Whether a server that answered the request for the whole tree at `location` with `status` refuses that for any tree.
bool RefusesTrees(int status, ServiceConnection& connection, const Location& location) {
    if (status < HttpStatus::BadRequest || status >= HttpStatus::InternalServerError ||
        status == HttpStatus::Unauthorized || status == HttpStatus::NotFound) {
        return false;
    }
    // Servers word it in too many ways, but one that shows the folder itself can only mean the depth.
    try {
        return connection.Folders().FolderExists(connection.Folder(location.serverPath));
    } catch (const sync::core::SyncException&) {
        return false;
    }
}

}  // namespace

ExitCode RunCommandLine(int argc, const char* const* argv) {
    // Names of files are UTF-8, whatever the locale is.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    log4cplus::Logger log = log4cplus::Logger::getRoot();
    log.setLogLevel(log4cplus::ERROR_LOG_LEVEL);
    const LoggedErrors loggedErrors(log, [](const QString& message) { Complain(TerminalText(message)); });
    Location location;
    std::optional<ServiceConnection> connection;
    CLI::App app("Lists, looks up and changes what lies on a Drovane service or any other WebDAV server.", "ovsync");
    Arguments arguments;
    const Commands commands(app, arguments);
    try {
        app.set_version_flag("--version", std::string("ovsync ") + OVSYNC_VERSION);
        app.require_subcommand(1);
        app.footer(Footer);
        try {
            app.parse(argc, argv);
        } catch (const CLI::ParseError& e) {
            std::ostringstream errors;
            const bool isDone = app.exit(e, std::cout, errors) == 0;
            if (!isDone) {
                // Whatever is missing is named before anything that is too much.
                const bool misses = dynamic_cast<const CLI::RequiredError*>(&e) != nullptr;
                const std::vector<std::string> unknown = misses ? app.remaining(true) : std::vector<std::string>();
                ComplainOfUsage((unknown.empty() ? "" : unknown.front() + " is not known here. ") + errors.str());
            }
            return isDone ? ExitCode::Done : ExitCode::WrongUsage;
        }

        Output output;
        if (const LocalCommand* const command = commands.ParsedLocal()) {
            const ExitCode code = (*command)(arguments, output);
            output.Flush();
            return code;
        }
        location = Location::FromUrl(QString::fromStdString(arguments.url));
        wire::ConnectionSettings settings = arguments.Connecting();
        settings.onProgress = [shown = settings.onProgress, &connection](qint64 bytes, bool isOver) {
            if (Interruption::IsRequested()) {
                connection->Cancel();
            }
            if (shown) {
                shown(bytes, isOver);
            }
        };
        const QString user = arguments.user.empty() ? location.user : QString::fromStdString(arguments.user);
        connection.emplace(location.baseUrl, FindCredentials(user, location.baseUrl.host()), settings);
        const ExitCode exitCode = (*commands.Parsed())(*connection, location, arguments, output);
        output.Flush();
        return exitCode;
    } catch (const UsageError& e) {
        ComplainOf(e);
        return ExitCode::WrongUsage;
    } catch (const Refusal& e) {
        ComplainOf(e);
        return ExitCode::Refused;
    } catch (const pass::WrongFolder& e) {
        ComplainOf(e);
        return ExitCode::WrongUsage;
    } catch (const local::LocalError& e) {
        ComplainOf(e);
        return ExitCode::Refused;
    } catch (const store::StoreError& e) {
        ComplainOf(e);
        return ExitCode::Refused;
    } catch (const HttpException& e) {
        ComplainOf(e);
        Complain(QStringLiteral("The answer was ") + connection->LastAnswer());
        if (e.StatusCode() == HttpStatus::Unauthorized) {
            Complain(QStringLiteral("Give a user name with -u."));
        }
        if (commands.ListsTree() && RefusesTrees(e.StatusCode(), *connection, location)) {
            Complain(QStringLiteral(
                "This server does not list a whole tree at once (Depth: infinity). List it folder by folder with ls."));
        }
        return ExitCode::Refused;
    } catch (const std::exception& e) {
        ComplainOf(e);
        return ExitCode::Unreachable;
    }
}

}  // namespace cli
}  // namespace ovsync
