#include "client/cli/commands/MoveCommand.h"

#include <CLI/CLI.hpp>

#include <nlohmann/json.hpp>

#include "client/cli/commands/ExistingFolder.h"
#include "client/cli/input/UsageError.h"

namespace ovsync {
namespace commands {

using input::Arguments;
using input::Location;
using input::UsageError;
using library::ServiceConnection;
using output::Output;

namespace {

void MoveFolder(ServiceConnection& connection, const Location& from, const Location& to, bool asJson, Output& output) {
    if (!from.IsOnServerOf(to)) {
        throw UsageError(QStringLiteral("%1 and %2 are two servers, and a folder is moved within one")
                             .arg(from.baseUrl.toString(), to.baseUrl.toString()));
    }
    if (from.serverPath.isEmpty() || to.serverPath.isEmpty()) {
        throw UsageError(QStringLiteral("%1: the root can be neither moved nor replaced").arg(from.baseUrl.toString()));
    }
    const sync::config::FolderConfiguration folder = FindFolder(connection, from, "mv");
    connection.Folders().MoveFolder(folder, connection.Folder(to.serverPath));
    if (asJson) {
        const nlohmann::ordered_json json = {{"from", from.serverPath.toStdString()},
                                             {"to", to.serverPath.toStdString()}};
        output.Write(QByteArray::fromStdString(json.dump()) + '\n');
    }
}

}  // namespace

void AddMoveCommand(CommandRegistry& registry) {
    CLI::App* const command = registry.AddAction(
        "mv", "Moves a folder to where nothing is, on the same server.",
        [](ServiceConnection& connection, const Location& location, const Arguments& given, Output& output) {
            MoveFolder(connection, location, Location::FromUrl(QString::fromStdString(given.destination)), given.isJson,
                       output);
        });
    registry.MarkAsWriting(command);
    CommandRegistry::AddText(command, "FROM", "The folder, for example http://host/folder/", registry.Given().url);
    CommandRegistry::AddText(command, "TO", "Its new URL, for example http://host/elsewhere/name/",
                             registry.Given().destination);
}

}  // namespace commands
}  // namespace ovsync
