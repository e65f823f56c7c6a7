#include "client/cli/commands/SizeCommand.h"

#include <CLI/CLI.hpp>
#include "client/wire/HttpStatus.h"

#include "client/cli/commands/ExistingFolder.h"
#include "client/cli/input/GlobFilter.h"

namespace ovsync {
namespace commands {

using input::Arguments;
using input::GlobFilter;
using input::Location;
using library::ServiceConnection;
using output::Output;
using wire::HttpStatus;

namespace {

QByteArray Counted(qint64 number, const char* unit) {
    return QByteArray::number(number) + ' ' + unit + (number == 1 ? "" : "s");
}

void MeasureTree(ServiceConnection& connection, const Location& location, const QStringList& excluded, bool asJson,
                 Output& output) {
    const auto filter = std::make_shared<GlobFilter>(excluded);
    const sync::config::FolderConfiguration folder = connection.Folder(location.serverPath);
    int count = 0;
    qint64 size = 0;
    if (connection.Folders().GetFolderSize(folder.serverPath, folder.serverId, true, count, size, filter, filter) ==
        HttpStatus::NotFound) {
        ThrowNoSuchFolder(location);
    }
    output.Write(asJson ? "{\"files\":" + QByteArray::number(count) + ",\"bytes\":" + QByteArray::number(size) + "}\n"
                        : Counted(count, "file") + ", " + Counted(size, "byte") + '\n');
}

}  // namespace

void AddSizeCommand(CommandRegistry& registry) {
    CLI::App* const command = registry.AddAction(
        "du", "Counts the files below a folder and their bytes.",
        [](ServiceConnection& connection, const Location& location, const Arguments& given, Output& output) {
            MeasureTree(connection, location, given.Excluded(), given.isJson, output);
        });
    CommandRegistry::AddText(command, "URL", "The folder, for example http://host/folder/", registry.Given().url);
    registry.AddExclude(command);
}

}  // namespace commands
}  // namespace ovsync
