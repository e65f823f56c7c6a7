#include "client/cli/commands/StatCommand.h"

#include <CLI/CLI.hpp>

#include <algorithm>

#include "client/cli/commands/ExistingFolder.h"
#include "client/cli/commands/FileOnService.h"
#include "client/cli/output/Complaint.h"
#include "client/cli/output/FileFormat.h"
#include "client/cli/output/FolderFormat.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace commands {

using input::Arguments;
using input::Location;
using library::ServiceConnection;
using output::ErrorMessage;
using output::ErrorText;
using output::FieldLines;
using output::JsonObject;
using output::Output;
using sync::config::FolderConfiguration;

namespace {

/// Adds to `folder` what the service tells of a folder only where it lists the one above.
void AddListedFields(ServiceConnection& connection, const Location& location, const Arguments& given,
                     FolderConfiguration& folder) {
    FolderConfiguration parent = connection.Folder(location.ParentPath());
    std::shared_ptr<QVector<FolderConfiguration>> listed;
    try {
        listed = connection.Folders().GetNameSortedDirsByFolder(parent);
    } catch (const sync::core::SyncException&) {
        // Whoever may see a folder need not see those beside it, and what lies above it may know no WebDAV.
        ErrorMessage error = ErrorText({location.Server(), location.ParentPath()}).Of(std::current_exception());
        error.text =
            QStringLiteral("date, id and privileges of \"%1\" are missing: %2").arg(location.serverPath, error.text);
        if (!given.isQuiet) {
            output::Warn(error, given.Errors());
        }
        return;
    }
    const auto found = std::find_if(listed->cbegin(), listed->cend(), [&folder](const FolderConfiguration& other) {
        return other.serverPath == folder.serverPath;
    });
    if (found != listed->cend()) {
        folder.lastModifiedDate = found->lastModifiedDate;
        folder.resourceId = found->resourceId;
        folder.setPrivileges(found->getPrivileges());
    }
}

void ShowResource(ServiceConnection& connection, const Location& location, const Arguments& given, Output& output) {
    const bool asJson = given.isJson;
    library::FoundResource found = FindResource(connection, location);
    if (!found.isFolder) {
        found.file.size = connection.SizeOf(found.file.serverPath, found.file.size);
        output.Write(asJson ? JsonObject(found.file) + '\n' : FieldLines(found.file, output));
        return;
    }
    FolderConfiguration folder = FindFolder(connection, location, "stat");
    if (!location.serverPath.isEmpty()) {
        AddListedFields(connection, location, given, folder);
    }
    output.Write(asJson ? JsonObject(folder) + '\n' : FieldLines(folder, output));
}

}  // namespace

void AddStatCommand(CommandRegistry& registry) {
    CLI::App* const command =
        registry.AddAction("stat", "Prints what the service knows of one folder or file.",
                           [](ServiceConnection& connection, const Location& location, const Arguments& given,
                              Output& output) { ShowResource(connection, location, given, output); });
    registry.MarkAsTakingFiles(command);
    CommandRegistry::AddText(command, "URL", "The folder or file, for example http://host/folder/file.txt",
                             registry.Given().url);
}

}  // namespace commands
}  // namespace ovsync
