#include "client/cli/files/CopyCommand.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "client/cli/commands/ExistingFolder.h"
#include "client/cli/commands/FileOnService.h"
#include "client/cli/input/MakeAt.h"
#include "client/cli/input/Refusal.h"
#include "client/cli/input/UsageError.h"
#include "client/wire/HttpStatus.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace files {

using commands::CommandRegistry;
using commands::FindResource;
using commands::TargetOf;
using content::ResourceConnection;
using input::Arguments;
using input::Location;
using input::UsageError;
using library::FoundResource;
using library::ServiceConnection;
using output::Output;

using Overwriting = ResourceConnection::Overwriting;

namespace {

/// Copies or moves the file or folder at one place to another one.
using Transfer = std::function<void(ServiceConnection&, const FoundResource&, const Location& from, const Location& to,
                                    Overwriting)>;

QUrl FolderUrl(const ServiceConnection& connection, const Location& location) {
    return connection.UrlOf(location.serverPath + QLatin1Char('/'));
}

void CopyResource(ServiceConnection& connection, const FoundResource& found, const Location& from, const Location& to,
                  Overwriting overwriting) {
    const auto session = connection.NewResourceConnection();
    if (found.isFolder) {
        session->Copy(FolderUrl(connection, from), FolderUrl(connection, to), overwriting);
    } else {
        session->Copy(connection.UrlOf(from.serverPath), connection.UrlOf(to.serverPath), overwriting);
    }
}

void MoveResource(ServiceConnection& connection, const FoundResource& found, const Location& from, const Location& to,
                  Overwriting overwriting) {
    if (found.isFolder) {
        connection.Folders().MoveFolder(connection.Folder(from.serverPath), connection.Folder(to.serverPath));
    } else {
        connection.NewResourceConnection()->Move(connection.UrlOf(from.serverPath), connection.UrlOf(to.serverPath),
                                                 overwriting);
    }
}

void Run(ServiceConnection& connection, const Location& from, const Arguments& given, Output& output,
         const Transfer& transfer) {
    Location to = Location::FromUrl(QString::fromStdString(given.destination));
    if (!from.IsOnServerOf(to)) {
        throw UsageError(QStringLiteral("%1 and %2 are two servers, and nothing goes from one to the other but by get "
                                        "and put, or pull and push")
                             .arg(from.baseUrl.toString(), to.baseUrl.toString()));
    }
    if (!to.user.isEmpty() && to.user != connection.Credentials().user()) {
        throw UsageError(QStringLiteral("The second URL names \"%1\", who is not the user that logs in; name one user "
                                        "with -u")
                             .arg(to.user));
    }
    if (from.serverPath.isEmpty()) {
        throw UsageError(QStringLiteral("%1: the root can be neither moved nor copied").arg(from.baseUrl.toString()));
    }
    const FoundResource found = FindResource(connection, from);
    if (!found.isFolder) {
        to = TargetOf(connection, to, from.Name());
    }
    if (to.serverPath.isEmpty()) {
        throw UsageError(QStringLiteral("%1: the root cannot be replaced").arg(to.baseUrl.toString()));
    }
    if ((to.serverPath + QLatin1Char('/')).startsWith(from.serverPath + QLatin1Char('/'))) {
        throw UsageError(QStringLiteral("\"%1\" cannot go to \"%2\": that is itself, or lies in it")
                             .arg(from.serverPath, to.serverPath));
    }
    const bool replaces = given.isForced && !found.isFolder;
    try {
        input::MakeAt(connection, to,
                      [&] { transfer(connection, found, from, to, replaces ? Overwriting::Yes : Overwriting::No); });
    } catch (const sync::http::HttpException& e) {
        if (e.StatusCode() != wire::HttpStatus::PreconditionFailed) {
            throw;
        }
        throw input::Refusal(QStringLiteral("There is something at \"%1\" already%2")
                                 .arg(to.serverPath, found.isFolder ? QStringLiteral(", and a folder replaces nothing")
                                                                    : QStringLiteral("; --force replaces it")));
    }
    if (given.isJson) {
        const nlohmann::ordered_json json = {{"from", from.serverPath.toStdString()},
                                             {"to", to.serverPath.toStdString()}};
        output.Write(QByteArray::fromStdString(json.dump()) + '\n');
    }
}

void Add(CommandRegistry& registry, const char* name, const char* description, const Transfer& transfer) {
    CLI::App* const command =
        registry.AddAction(name, description,
                           [transfer](ServiceConnection& connection, const Location& location, const Arguments& given,
                                      Output& output) { Run(connection, location, given, output, transfer); });
    registry.MarkAsTakingFiles(command);
    registry.MarkAsWriting(command);
    CommandRegistry::AddText(command, "FROM", "The file or folder, for example http://host/folder/file.txt",
                             registry.Given().url);
    CommandRegistry::AddText(command, "TO", "Its new URL; of a file also a folder that it goes into",
                             registry.Given().destination);
    command->add_flag("-f,--force", registry.Given().isForced, "Replace a file by a file");
}

}  // namespace

void AddCopyCommand(CommandRegistry& registry) {
    Add(registry, "cp", "Copies a file, or a folder with everything in it, on the same server.", CopyResource);
}

void AddMoveCommand(CommandRegistry& registry) {
    Add(registry, "mv", "Moves a file or a folder on the same server.", MoveResource);
}

}  // namespace files
}  // namespace ovsync
