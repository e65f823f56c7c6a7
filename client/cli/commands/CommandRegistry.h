#pragma once

#include <functional>
#include <map>
#include <string>

#include "client/cli/input/Arguments.h"
#include "client/cli/input/Location.h"
#include "client/cli/output/ExitCode.h"
#include "client/cli/output/Output.h"
#include "client/library/ServiceConnection.h"

namespace CLI {
class App;
}

namespace ovsync {
namespace commands {

/// The commands of the command line: how each is read into Arguments and what it then does. The unit of a command adds
/// it. Not thread-safe.
class CommandRegistry {
public:
    using Command = std::function<output::ExitCode(library::ServiceConnection&, const input::Location&,
                                                   const input::Arguments&, output::Output&)>;
    /// A command that is done when it does not throw.
    using Action = std::function<void(library::ServiceConnection&, const input::Location&, const input::Arguments&,
                                      output::Output&)>;
    /// A command that needs no service.
    using LocalCommand = std::function<output::ExitCode(const input::Arguments&, output::Output&)>;

    /// `app` outlives this object.
    explicit CommandRegistry(CLI::App& app) : _app(app) {}

    CLI::App* AddAction(const char* name, const char* description, const Action& action);
    CLI::App* AddCommand(const char* name, const char* description, const Command& command);
    /// A command that only has others below it. `footer` ends the help of each.
    CLI::App* AddGroup(const char* name, const char* description, const char* footer);
    CLI::App* AddLocal(CLI::App& group, const char* name, const char* description, const LocalCommand& command);
    /// One that is in no group.
    CLI::App* AddLocal(const char* name, const char* description, const LocalCommand& command);

    /// Has to be given; `value` is one of the fields of Given.
    static void AddText(CLI::App* command, const char* name, const char* description, std::string& value);
    void AddLong(CLI::App* command);
    void AddExclude(CLI::App* command);
    void AddBandwidth(CLI::App* command);
    void AddDeletionLimit(CLI::App* command);
    /// How a folder is synced, whoever begins the passes.
    void AddFolderOptions(CLI::App* command);
    void AddPassOptions(CLI::App* command);
    /// The command changes something on the service.
    void MarkAsWriting(const CLI::App* command) { _writingCommands.push_back(command); }
    /// The command takes the URLs of files, too.
    void MarkAsTakingFiles(const CLI::App* command) { _fileCommands.push_back(command); }

    /// The command asks for the password, whether one is kept or not.
    void MarkAsLogin(const CLI::App* command) { _loginCommands.push_back(command); }

    /// What options write to.
    input::Arguments& Given() { return _given; }

    /// What the command line, once it was read, asks for: null when that is a local command.
    const Command* Parsed() const;
    const LocalCommand* ParsedLocal() const;
    bool Writes() const { return _HasParsed(_writingCommands); }
    bool LogsIn() const { return _HasParsed(_loginCommands); }
    bool TakesFiles() const { return _HasParsed(_fileCommands); }

private:
    static bool _HasParsed(const std::vector<const CLI::App*>& commands);
    /// What every command has.
    void _AddCommon(CLI::App* command);

    CLI::App& _app;
    input::Arguments _given;
    std::map<const CLI::App*, Command> _commands;
    std::map<const CLI::App*, LocalCommand> _localCommands;
    std::vector<const CLI::App*> _writingCommands;
    std::vector<const CLI::App*> _fileCommands;
    std::vector<const CLI::App*> _loginCommands;
};

}  // namespace commands
}  // namespace ovsync
