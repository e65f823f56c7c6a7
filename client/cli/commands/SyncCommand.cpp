#include "client/cli/commands/SyncCommand.h"

#include <CLI/CLI.hpp>
#include <map>
#include <string>

#include "client/cli/commands/SyncRun.h"
#include "client/sync/both/TwoWayPass.h"

namespace ovsync {
namespace commands {

using input::Arguments;
using input::Location;
using input::SyncArguments;
using library::ServiceConnection;
using output::ExitCode;
using output::Output;
using pass::SyncOptions;

namespace {

ExitCode Sync(ServiceConnection& connection, const Location& location, const SyncArguments& arguments, Output& output) {
    SyncArguments used = arguments;
    used.isPush = true;
    return RunPassMakingFolder(connection, location, used, output, "sync",
                               [](pass::SyncPass& pass) { return both::TwoWayPass(pass).Run(); });
}

}  // namespace

void AddSyncCommand(CommandRegistry& registry) {
    static const std::map<std::string, SyncOptions::Conflicts> winners = {{"newer", SyncOptions::Conflicts::Newer},
                                                                          {"here", SyncOptions::Conflicts::Here},
                                                                          {"there", SyncOptions::Conflicts::There}};
    CLI::App* const command =
        registry.AddCommand("sync", "Brings a local folder and a folder of the service in step, both ways.",
                            [](ServiceConnection& connection, const Location& location, const Arguments& given,
                               Output& output) { return Sync(connection, location, given.Syncing(), output); });
    CommandRegistry::AddText(command, "DIR", "The local folder, made when it is missing", registry.Given().directory);
    CommandRegistry::AddText(command, "URL", "The folder, for example http://host/folder/", registry.Given().url);
    command
        ->add_option(
            "--conflict", registry.Given().conflicts,
            "Take the \"newer\" version of what both sides changed, or that of \"here\" or \"there\", and keep "
            "the other one in the trash (both are kept side by side unless given)")
        ->type_name("newer|here|there")
        ->transform(CLI::Validator(
            [](std::string& text) {
                const auto winner = winners.find(text);
                if (winner == winners.end()) {
                    return '"' + text + "\" is none of newer, here and there";
                }
                text = std::to_string(static_cast<int>(winner->second));
                return std::string();
            },
            ""));
    registry.AddDeletionLimit(command);
    registry.AddPassOptions(command);
    registry.MarkAsWriting(command);
}

}  // namespace commands
}  // namespace ovsync
