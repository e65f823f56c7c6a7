#include "client/cli/commands/CommandRegistry.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <limits>

#include "client/cli/input/NumberRange.h"

namespace ovsync {
namespace commands {

using input::Arguments;
using input::Location;
using input::Number;
using input::WholeNumber;
using library::ServiceConnection;
using output::ExitCode;
using output::Output;

namespace {

const int MostDaysKept = 36500;

void AddLimit(CLI::App* command, const char* name, const char* description, qint64& limit) {
    command->add_option(name, limit, description)
        ->type_name("N")
        ->check(WholeNumber(1, std::numeric_limits<qint64>::max()));
}

template <typename Command>
const Command* ParsedOf(const std::map<const CLI::App*, Command>& commands) {
    const auto parsed =
        std::find_if(commands.begin(), commands.end(), [](const auto& command) { return command.first->parsed(); });
    return parsed == commands.end() ? nullptr : &parsed->second;
}

}  // namespace

CLI::App* CommandRegistry::AddAction(const char* name, const char* description, const Action& action) {
    return AddCommand(
        name, description,
        [action](ServiceConnection& connection, const Location& location, const Arguments& given, Output& output) {
            action(connection, location, given, output);
            return ExitCode::Done;
        });
}

CLI::App* CommandRegistry::AddCommand(const char* name, const char* description, const Command& command) {
    CLI::App* const added = _app.add_subcommand(name, description);
    added->add_option("-u,--user", _given.user, "Name to log in with")->type_name("USER");
    _AddCommon(added);
    added->add_option("--ca-file", _given.caFile, "Trust the PEM certificates in FILE in place of the system's")
        ->type_name("FILE")
        ->check(CLI::ExistingFile);
    added
        ->add_option("--silence-limit", _given.silenceLimit,
                     "Give up when nothing was heard for so many SECONDS (60 unless given)")
        ->type_name("SECONDS")
        ->check(Number(0.001, 86400));
    AddLimit(added, Arguments::EntriesOption, "Refuse a listing of more than N entries (5000000 unless given)",
             _given.maxListingEntries);
    AddLimit(added, Arguments::BytesOption, "Refuse a listing of more than N bytes, unpacked (4294967296 unless given)",
             _given.maxListingBytes);
    added->footer(_app.get_footer());
    _commands.emplace(added, command);
    return added;
}

CLI::App* CommandRegistry::AddGroup(const char* name, const char* description, const char* footer) {
    CLI::App* const group = _app.add_subcommand(name, description);
    group->require_subcommand(1);
    // For its help: the options of a command line are read as those of the command itself.
    _AddCommon(group);
    group->footer(footer);
    return group;
}

CLI::App* CommandRegistry::AddLocal(CLI::App& group, const char* name, const char* description,
                                    const LocalCommand& command) {
    CLI::App* const added = group.add_subcommand(name, description);
    _AddCommon(added);
    added->footer(group.get_footer());
    _localCommands.emplace(added, command);
    return added;
}

CLI::App* CommandRegistry::AddLocal(const char* name, const char* description, const LocalCommand& command) {
    return AddLocal(_app, name, description, command);
}

void CommandRegistry::AddText(CLI::App* command, const char* name, const char* description, std::string& value) {
    command->add_option(name, value, description)->required();
}

void CommandRegistry::AddLong(CLI::App* command) {
    command->add_flag("-l,--long", _given.isLong, "Print the size in bytes, the date and the version before the name")
        ->excludes(command->get_option("--json"));
}

void CommandRegistry::AddExclude(CLI::App* command) {
    const auto add = [command](const char* name, const char* description, const char* type, const auto& action) {
        command->add_option_function<std::string>(name, action, description)
            ->type_name(type)
            ->trigger_on_parse()
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    };
    add("--exclude", "Leave out what PATTERN matches, by the rules of .gitignore; can be repeated", "PATTERN",
        [this](const std::string& pattern) { _given.AddRule("--exclude", "", pattern); });
    add("--include", "Do not leave out what PATTERN matches, though an --exclude before it does", "PATTERN",
        [this](const std::string& pattern) { _given.AddRule("--include", "!", pattern); });
    add("--exclude-from", "Leave out by the patterns in FILE, which looks like a .gitignore", "FILE",
        [this](const std::string& file) { _given.AddRulesOf(file); });
}

void CommandRegistry::AddBandwidth(CLI::App* command) {
    command
        ->add_option("--bandwidth", _given.bandwidth, "Transfer at most RATE bytes a second each way, as 500K or 2.5M")
        ->type_name("RATE");
}

void CommandRegistry::AddDeletionLimit(CLI::App* command) {
    command
        ->add_option(
            "--max-delete", _given.maxDelete,
            "Delete nothing on a side when it would be more than N files, or N% of them (half of ten and more, "
            "and never all, unless given)")
        ->type_name("N");
}

void CommandRegistry::AddFolderOptions(CLI::App* command) {
    AddExclude(command);
    command->add_option("-j,--transfers", _given.transfers, "Transfer up to N files at once (4 unless given)")
        ->type_name("N")
        ->check(WholeNumber(1, 64));
    command
        ->add_option("--keep-deleted", _given.daysKept,
                     "Keep what is replaced or deleted here for so many DAYS in DIR/.ovsync/trash (30 unless given)")
        ->type_name("DAYS")
        ->check(WholeNumber(0, MostDaysKept));
}

void CommandRegistry::AddPassOptions(CLI::App* command) {
    AddFolderOptions(command);
    AddBandwidth(command);
    command->add_flag("-n,--dry-run", _given.isDryRun, "Only say what would be done, and change nothing");
    command->add_flag("--strict", _given.isStrict, "Exit with 1 also for links and other things that are never synced");
}

const CommandRegistry::Command* CommandRegistry::Parsed() const {
    return ParsedOf(_commands);
}

const CommandRegistry::LocalCommand* CommandRegistry::ParsedLocal() const {
    return ParsedOf(_localCommands);
}

bool CommandRegistry::_HasParsed(const std::vector<const CLI::App*>& commands) {
    return std::any_of(commands.begin(), commands.end(), [](const CLI::App* command) { return command->parsed(); });
}

void CommandRegistry::_AddCommon(CLI::App* command) {
    command->add_flag("--json", _given.isJson, "Print JSON, errors too");
    CLI::Option* const quiet = command->add_flag("-q,--quiet", _given.isQuiet, "Print results and errors only");
    command->add_flag("-v,--verbose", _given.isVerbose, "Print the details of errors, too")->excludes(quiet);
}

}  // namespace commands
}  // namespace ovsync
