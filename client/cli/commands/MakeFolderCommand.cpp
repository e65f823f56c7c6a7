#include "client/cli/commands/MakeFolderCommand.h"

#include <CLI/CLI.hpp>

#include "client/cli/commands/ExistingFolder.h"
#include "client/cli/input/MakeAt.h"
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

void MakeFolder(ServiceConnection& connection, const Location& location, bool withParents, bool asJson,
                Output& output) {
    if (location.serverPath.isEmpty()) {
        throw UsageError(QStringLiteral("%1: the root is always there").arg(location.baseUrl.toString()));
    }
    sync::config::FolderConfiguration folder = connection.Folder(location.serverPath);
    folder.serverRootPath.clear();
    const auto create = [&](const QString& parentId) {
        input::MakeFolderAt(connection, location,
                            [&] { connection.Folders().CreateFolder(folder, parentId, withParents); });
    };
    if (withParents) {
        create(QString());
    } else {
        input::MakeAt(connection, location,
                      [&] { create(FindFolder(connection, location.Parent(), "mkdir").getServerFolderId()); });
    }
    if (asJson) {
        output.Write(JsonObject(folder) + '\n');
    }
}

}  // namespace

void AddMakeFolderCommand(CommandRegistry& registry) {
    CLI::App* const command = registry.AddAction(
        "mkdir", "Creates a folder. One that is there already is left as it is.",
        [](ServiceConnection& connection, const Location& location, const Arguments& given, Output& output) {
            MakeFolder(connection, location, given.withParents, given.isJson, output);
        });
    registry.MarkAsWriting(command);
    CommandRegistry::AddText(command, "URL", "The new folder, for example http://host/folder/new/",
                             registry.Given().url);
    command->add_flag("-p,--parents", registry.Given().withParents, "Create the missing folders above it too");
}

}  // namespace commands
}  // namespace ovsync
