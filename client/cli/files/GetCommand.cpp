#include "client/cli/files/GetCommand.h"

#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <QDir>
#include <QFileInfo>
#include <cerrno>
#include <nlohmann/json.hpp>

#include "client/cli/commands/FileOnService.h"
#include "client/cli/files/FetchedFile.h"
#include "client/cli/files/StreamedContent.h"
#include "client/cli/input/UsageError.h"
#include "client/cli/output/Complaint.h"
#include "client/sync/local/LocalError.h"
#include "client/sync/local/PathNames.h"
#include "client/sync/pass/RemoteVersion.h"

namespace ovsync {
namespace files {

using commands::CommandRegistry;
using commands::FindFile;
using input::Arguments;
using input::Location;
using input::UsageError;
using library::ServiceConnection;
using local::LocalError;
using output::Output;
using pass::IdentityOf;
using pass::IsContentOf;
using sync::config::FileConfiguration;

namespace {

const char* const PullsFolders = "pull fetches folders, and ls lists them";
const int PatienceWithChanges = 3;

/// Where the file named `name` is to go.
QString PathToWrite(const QString& typed, const QString& name) {
    QString path = typed;
    if (typed.isEmpty() || typed.endsWith(QLatin1Char('/')) || QFileInfo(typed).isDir()) {
        const QString reason = local::ReasonAgainst(name);
        if (!reason.isEmpty()) {
            throw UsageError(
                QStringLiteral("\"%1\" is no name for a file here: %2. Name another one").arg(name, reason));
        }
        path = QDir(typed.isEmpty() ? QStringLiteral(".") : typed).filePath(name);
    }
    const QFileInfo place(path);
    if (place.isDir()) {
        throw UsageError(QStringLiteral("%1: this is a folder").arg(path));
    }
    if (!place.isSymLink()) {
        return path;
    }
    // The file that the link leads to is replaced, not the link.
    QString target = place.canonicalFilePath();
    if (target.isEmpty()) {
        throw UsageError(QStringLiteral("%1: this is a link to nothing").arg(path));
    }
    return target;
}

/// Until what came is what the service lists; nothing is kept of anything else.
FileConfiguration FetchContent(ServiceConnection& connection, const Location& location, ReceivedContent& content,
                               const std::function<void()>& discard) {
    FileConfiguration listed = FindFile(connection, location, PullsFolders);
    const auto session = connection.NewContentConnection();
    for (int i = 0; i < PatienceWithChanges; ++i) {
        const bool goesOn = content.Received().size > 0;
        session->Download(connection.UrlOf(location.serverPath), content);
        if (IsContentOf(listed, content.Size(), content.Md5())) {
            return listed;
        }
        FileConfiguration now = FindFile(connection, location, PullsFolders);
        if (IsContentOf(now, content.Size(), content.Md5())) {
            return now;
        }
        const bool hasChanged = IdentityOf(now) != IdentityOf(listed);
        listed = now;
        discard();
        if (!hasChanged && !goesOn) {
            break;
        }
    }
    throw sync::core::SyncException(
        QStringLiteral("What came for \"%1\" is not what the service lists, by its size or its MD5")
            .arg(location.serverPath));
}

void FetchInto(ServiceConnection& connection, const Location& location, int descriptor, const QString& name) {
    StreamedContent content(descriptor, name);
    FetchContent(connection, location, content, [&name] {
        throw sync::core::SyncException(
            QStringLiteral("%1: what came is not what the service lists, or changed meanwhile").arg(name));
    });
}

void WriteReport(const QString& path, const ReceivedContent& content, Output& output) {
    const nlohmann::ordered_json json = {
        {"file", path.toStdString()}, {"size", content.Size()}, {"md5", content.Md5().toStdString()}};
    output.Write(QByteArray::fromStdString(json.dump()) + '\n');
}

void FetchFile(ServiceConnection& connection, const Location& location, const QString& path, bool asJson,
               Output& output) {
    FetchedFile content(path, connection.UrlOf(location.serverPath));
    FileConfiguration listed;
    try {
        listed = FetchContent(connection, location, content, [&content] { content.Discard(); });
    } catch (const std::exception&) {
        if (content.CanGoOn() && !asJson) {
            output::Complain(
                QStringLiteral("%1 bytes are kept, and the next get goes on from there").arg(content.Size()));
        }
        throw;
    }
    const wire::FileAttributes attributes = connection.AttributesOf(location.serverPath);
    content.Install(attributes.DateOf(content.Md5(), listed.lastModifiedDate), attributes.isExecutable);
    if (asJson) {
        WriteReport(path, content, output);
    }
}

void Get(ServiceConnection& connection, const Location& location, const QString& typed, bool asJson, Output& output) {
    if (typed == QLatin1String("-")) {
        if (asJson) {
            throw UsageError(QStringLiteral("--json: standard output is taken by the content"));
        }
        FetchInto(connection, location, STDOUT_FILENO, QStringLiteral("Standard output"));
        return;
    }
    const QString path = PathToWrite(typed, location.Name());
    const QFileInfo place(path);
    if (!place.exists() || place.isFile()) {
        FetchFile(connection, location, path, asJson, output);
        return;
    }
    const int device = open(path.toUtf8().constData(), O_WRONLY | O_CLOEXEC);
    if (device < 0) {
        throw LocalError(path, errno);
    }
    const local::LocalFile owner(device, path);
    FetchInto(connection, location, device, path);
}

}  // namespace

void AddGetCommand(CommandRegistry& registry) {
    CLI::App* const command = registry.AddAction(
        "get", "Fetches a file. One that is there is replaced when all of it came.",
        [](ServiceConnection& connection, const Location& location, const Arguments& given, Output& output) {
            Get(connection, location, QString::fromStdString(given.path), given.isJson, output);
        });
    registry.MarkAsTakingFiles(command);
    registry.AddBandwidth(command);
    CommandRegistry::AddText(command, "URL", "The file, for example http://host/folder/file.txt", registry.Given().url);
    command->add_option("FILE", registry.Given().path,
                        "Where it goes: a file, a folder, or - for standard output (the current folder unless given)");
}

void AddCatCommand(CommandRegistry& registry) {
    CLI::App* const command = registry.AddAction(
        "cat", "Prints the content of a file.",
        [](ServiceConnection& connection, const Location& location, const Arguments& given, Output& output) {
            Get(connection, location, QStringLiteral("-"), given.isJson, output);
        });
    registry.MarkAsTakingFiles(command);
    registry.AddBandwidth(command);
    CommandRegistry::AddText(command, "URL", "The file, for example http://host/folder/file.txt", registry.Given().url);
}

}  // namespace files
}  // namespace ovsync
