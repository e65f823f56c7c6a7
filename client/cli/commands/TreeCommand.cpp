#include "client/cli/commands/TreeCommand.h"

#include <CLI/CLI.hpp>

#include "client/cli/commands/ExistingFolder.h"
#include "client/cli/commands/ListedEntries.h"
#include "client/cli/output/Complaint.h"
#include "client/cli/output/DateText.h"
#include "client/wire/HttpStatus.h"

namespace ovsync {
namespace commands {

using input::Arguments;
using input::Location;
using library::ServiceConnection;
using output::Complain;
using output::DateText;
using output::ListFormat;
using output::Output;
using output::WriteEntries;
using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;
using wire::HttpStatus;

namespace {

/// A listed record is shown by its path below the listed folder; a file that was asked for itself by its name.
template <typename Record>
void NameByPathBelow(const QString& serverPath, QVector<Record>& records) {
    const int skipped = serverPath.isEmpty() ? 0 : serverPath.size() + 1;
    for (Record& record : records) {
        if (record.serverPath.size() > skipped) {
            record.name = record.serverPath.mid(skipped);
        }
    }
}

void ShowTree(ServiceConnection& connection, const Location& location, const Arguments& given, Output& output) {
    const local::Exclusion excluded = given.Excluded();
    const QDateTime since = given.Since();
    const ListFormat format = given.Format();
    FolderConfiguration folder = connection.Folder(location.serverPath);
    folder.setLastSyncTime(since);
    std::shared_ptr<QVector<FolderConfiguration>> folders;
    std::shared_ptr<QVector<FileConfiguration>> files;
    const int status = connection.Folders().GetAllFilesAndSubFoldersByFolder(folder, folders, files);
    if (status == HttpStatus::NotFound) {
        ThrowNoSuchFolder(location);
    }
    const bool isUnchanged = status == HttpStatus::NotModified;
    const QByteArray time = DateText(folder.getLastServerSyncRequestTime());
    if (!isUnchanged) {
        PrepareEntries(connection, location, excluded, *folders, *files);
        NameByPathBelow(location.serverPath, *folders);
        NameByPathBelow(location.serverPath, *files);
    }
    if (format == ListFormat::Json) {
        output.Write("{\"serverTime\":" + (time.isEmpty() ? "null" : '"' + time + '"') +
                     (isUnchanged ? ",\"changed\":false" : ",\"changed\":true,\"entries\":"));
        if (!isUnchanged) {
            WriteEntries(*folders, *files, format, output);
        }
        output.Write("}\n");
        return;
    }
    if (!isUnchanged) {
        WriteEntries(*folders, *files, format, output);
    } else if (!given.isQuiet) {
        Complain(QStringLiteral("nothing changed"));
    }
    if (!time.isEmpty() && !given.isQuiet) {
        Complain(QStringLiteral("the service's time is ") + QString::fromLatin1(time));
    }
}

}  // namespace

void AddTreeCommand(CommandRegistry& registry) {
    CLI::App* const command =
        registry.AddAction("tree", "Lists everything below a folder, one path a line, in name order.",
                           [](ServiceConnection& connection, const Location& location, const Arguments& given,
                              Output& output) { ShowTree(connection, location, given, output); });
    CommandRegistry::AddText(command, "URL", "The folder, for example http://host/folder/", registry.Given().url);
    registry.AddLong(command);
    registry.AddExclude(command);
    command
        ->add_option("--since", registry.Given().since,
                     "List only if something changed since TIME, which an earlier listing gave as the service's")
        ->type_name("TIME");
}

}  // namespace commands
}  // namespace ovsync
