#include "client/cli/commands/ListCommand.h"

#include <CLI/CLI.hpp>
#include "client/wire/HttpStatus.h"

#include "client/cli/commands/ExistingFolder.h"

namespace ovsync {
namespace commands {

using input::Arguments;
using input::Location;
using library::ServiceConnection;
using output::ListFormat;
using output::Output;
using output::WriteEntries;
using wire::HttpStatus;

namespace {

void ListFolder(ServiceConnection& connection, const Location& location, ListFormat format, Output& output) {
    sync::config::FolderConfiguration folder = connection.Folder(location.serverPath);
    // The library asks for folders and for files by the same listing, which is fetched once. The folders come first
    // because they are few: whoever reads an answer first works on a copy of what it changes.
    connection.ShareNextListing();
    const auto folders = connection.Folders().GetNameSortedDirsByFolder(folder);
    std::shared_ptr<QVector<sync::config::FileConfiguration>> files;
    if (connection.Files().GetNameSortedFilesByFolder(folder, files) == HttpStatus::NotFound) {
        ThrowNoSuchFolder(location);
    }
    WriteEntries(*folders, *files, format, output);
    if (format == ListFormat::Json) {
        output.Write("\n");
    }
}

}  // namespace

void AddListCommand(CommandRegistry& registry) {
    CLI::App* const command =
        registry.AddAction("ls", "Lists the sub-folders and the files of a folder, one name a line, in name order.",
                           [](ServiceConnection& connection, const Location& location, const Arguments& given,
                              Output& output) { ListFolder(connection, location, given.Format(), output); });
    CommandRegistry::AddText(command, "URL", "The folder, for example http://host/folder/", registry.Given().url);
    registry.AddLong(command);
}

}  // namespace commands
}  // namespace ovsync
