#include "client/cli/commands/RemoveCommand.h"

#include <CLI/CLI.hpp>

#include "client/cli/commands/ExistingFolder.h"
#include "client/cli/input/UsageError.h"
#include "client/cli/output/FolderFormat.h"

namespace ovsync {
namespace commands {

using input::Arguments;
using input::Location;
using input::UsageError;
using library::ServiceConnection;
using output::JsonObject;
using output::Output;

namespace {

void RemoveFolder(ServiceConnection& connection, const Location& location, bool asJson, Output& output) {
    if (location.serverPath.isEmpty()) {
        throw UsageError(QStringLiteral("%1: the root cannot be removed").arg(location.baseUrl.toString()));
    }
    sync::config::FolderConfiguration folder = FindFolder(connection, location, "rm");
    connection.Folders().DeleteFolder(folder);
    if (asJson) {
        output.Write(JsonObject(folder) + '\n');
    }
}

}  // namespace

void AddRemoveCommand(CommandRegistry& registry) {
    CLI::App* const command =
        registry.AddAction("rm", "Removes a folder and everything in it.",
                           [](ServiceConnection& connection, const Location& location, const Arguments& given,
                              Output& output) { RemoveFolder(connection, location, given.isJson, output); });
    registry.MarkAsWriting(command);
    CommandRegistry::AddText(command, "URL", "The folder, for example http://host/folder/old/", registry.Given().url);
}

}  // namespace commands
}  // namespace ovsync
