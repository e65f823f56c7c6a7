#include "client/cli/files/RemoveCommand.h"

#include <CLI/CLI.hpp>

#include "client/cli/commands/ExistingFolder.h"
#include "client/cli/commands/FileOnService.h"
#include "client/cli/input/Refusal.h"
#include "client/cli/input/UsageError.h"
#include "client/cli/output/FileFormat.h"
#include "client/cli/output/FolderFormat.h"

namespace ovsync {
namespace files {

using commands::CommandRegistry;
using commands::FindResource;
using input::Arguments;
using input::Location;
using input::UsageError;
using library::FolderListing;
using library::FoundResource;
using library::ServiceConnection;
using output::JsonObject;
using output::Output;

namespace {

QByteArray RemoveFolder(ServiceConnection& connection, const Location& location, bool isRecursive) {
    sync::config::FolderConfiguration folder = commands::FindFolder(connection, location, "rm");
    if (!isRecursive) {
        const std::optional<FolderListing> listing = connection.List(connection.Folder(location.serverPath));
        if (listing && !(listing->folders.isEmpty() && listing->files.isEmpty())) {
            throw input::Refusal(QStringLiteral("\"%1\" has something in it; rm -r removes a folder with what is in it")
                                     .arg(location.serverPath));
        }
    }
    connection.Folders().DeleteFolder(folder);
    return JsonObject(folder);
}

QByteArray RemoveFile(ServiceConnection& connection, const sync::config::FileConfiguration& file) {
    connection.NewResourceConnection()->Remove(connection.UrlOf(file.serverPath));
    return JsonObject(file);
}

void Remove(ServiceConnection& connection, const Location& location, bool isRecursive, bool asJson, Output& output) {
    if (location.serverPath.isEmpty()) {
        throw UsageError(QStringLiteral("%1: the root cannot be removed").arg(location.baseUrl.toString()));
    }
    const FoundResource found = FindResource(connection, location);
    const QByteArray removed =
        found.isFolder ? RemoveFolder(connection, location, isRecursive) : RemoveFile(connection, found.file);
    if (asJson) {
        output.Write(removed + '\n');
    }
}

}  // namespace

void AddRemoveCommand(CommandRegistry& registry) {
    CLI::App* const command = registry.AddAction(
        "rm", "Removes a file or an empty folder, or with -r a folder and everything in it.",
        [](ServiceConnection& connection, const Location& location, const Arguments& given, Output& output) {
            Remove(connection, location, given.isRecursive, given.isJson, output);
        });
    registry.MarkAsTakingFiles(command);
    registry.MarkAsWriting(command);
    CommandRegistry::AddText(command, "URL", "The file or folder, for example http://host/folder/old.txt",
                             registry.Given().url);
    command->add_flag("-r,--recursive", registry.Given().isRecursive, "Remove a folder with everything in it");
}

}  // namespace files
}  // namespace ovsync
