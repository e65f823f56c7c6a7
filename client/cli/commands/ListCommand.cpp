#include "client/cli/commands/ListCommand.h"

#include <CLI/CLI.hpp>

#include "client/cli/commands/ExistingFolder.h"
#include "client/cli/commands/FileOnService.h"
#include "client/cli/commands/ListedEntries.h"

namespace ovsync {
namespace commands {

using input::Arguments;
using input::Location;
using library::FolderListing;
using library::ServiceConnection;
using output::ListFormat;
using output::Output;
using output::WriteEntries;

namespace {

FolderListing ListingOf(ServiceConnection& connection, const Location& location) {
    if (!location.isTypedAsFolder) {
        const library::FoundResource found = FindResource(connection, location);
        if (!found.isFolder) {
            return {{}, {found.file}};
        }
    }
    const std::optional<FolderListing> listing = connection.List(connection.Folder(location.serverPath));
    if (!listing) {
        ThrowNoSuchFolder(location);
    }
    return *listing;
}

void List(ServiceConnection& connection, const Location& location, const local::Exclusion& excluded, ListFormat format,
          Output& output) {
    FolderListing listing = ListingOf(connection, location);
    PrepareEntries(connection, location, excluded, listing.folders, listing.files);
    WriteEntries(listing.folders, listing.files, format, output);
    if (format == ListFormat::Json) {
        output.Write("\n");
    }
}

}  // namespace

void AddListCommand(CommandRegistry& registry) {
    CLI::App* const command = registry.AddAction(
        "ls", "Lists the sub-folders and the files of a folder, one name a line, in name order; or a file.",
        [](ServiceConnection& connection, const Location& location, const Arguments& given, Output& output) {
            List(connection, location, given.Excluded(), given.Format(), output);
        });
    registry.MarkAsTakingFiles(command);
    CommandRegistry::AddText(command, "URL", "The folder, for example http://host/folder/", registry.Given().url);
    registry.AddLong(command);
    registry.AddExclude(command);
}

}  // namespace commands
}  // namespace ovsync
