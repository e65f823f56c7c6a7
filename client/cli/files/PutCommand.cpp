#include "client/cli/files/PutCommand.h"

#include <CLI/CLI.hpp>
#include <QFileInfo>
#include <chrono>
#include <thread>

#include "client/cli/commands/ExistingFolder.h"
#include "client/cli/commands/FileOnService.h"
#include "client/cli/files/SentFile.h"
#include "client/cli/input/MakeAt.h"
#include "client/cli/input/Refusal.h"
#include "client/cli/input/UsageError.h"
#include "client/cli/output/FileFormat.h"
#include "client/sync/pass/RemoteVersion.h"

namespace ovsync {
namespace files {

using commands::CommandRegistry;
using commands::FindFile;
using commands::TargetOf;
using content::ContentVersion;
using content::IContentConnection;
using content::UploadCondition;
using content::UploadOutcome;
using input::Arguments;
using input::Location;
using input::Refusal;
using input::UsageError;
using library::ServiceConnection;
using output::Output;
using sync::config::FileConfiguration;

namespace {

// Some servers have no strong tag for what was changed within the last second.
const std::chrono::milliseconds PatienceWithWeakTags(1200);

std::optional<ContentVersion> VersionThere(IContentConnection& session, const QUrl& url) {
    std::optional<ContentVersion> version = session.Look(url);
    if (version && !version->weakTag.isEmpty()) {
        std::this_thread::sleep_for(PatienceWithWeakTags);
        version = session.Look(url);
    }
    return version;
}

UploadOutcome Send(IContentConnection& session, const QUrl& url, SentFile& file, bool isForced) {
    if (isForced) {
        return session.Upload(url, file, file.Size(), UploadCondition::Any, ContentVersion()).outcome;
    }
    const std::optional<ContentVersion> there = VersionThere(session, url);
    if (!there) {
        return session.Upload(url, file, file.Size(), UploadCondition::New, ContentVersion()).outcome;
    }
    if (there->entityTag.isEmpty() && !there->lastModified.isValid()) {
        throw Refusal(
            QStringLiteral("The service gives the file neither an entity tag nor a date, without which a "
                           "change that somebody else makes meanwhile could be overwritten; --force replaces "
                           "it nonetheless"));
    }
    return session.Upload(url, file, file.Size(), UploadCondition::Unchanged, *there).outcome;
}

void Put(ServiceConnection& connection, const Location& location, const QString& path, bool isForced, bool asJson,
         Output& output) {
    const bool isInput = path == QLatin1String("-");
    const Location target = TargetOf(connection, location, QFileInfo(path).fileName());
    if (isInput && target.serverPath != location.serverPath) {
        throw UsageError(QStringLiteral("\"%1\" is a folder, and what comes from standard input has no name; name the "
                                        "file, too")
                             .arg(location.serverPath));
    }
    SentFile file(path);
    const auto session = connection.NewContentConnection();
    UploadOutcome outcome = UploadOutcome::Refused;
    input::MakeAt(connection, target,
                  [&] { outcome = Send(*session, connection.UrlOf(target.serverPath), file, isForced); });
    if (outcome == UploadOutcome::Refused) {
        throw Refusal(QStringLiteral("Somebody has just changed \"%1\"; nothing was sent").arg(target.serverPath));
    }
    if (file.HasChanged()) {
        throw Refusal(QStringLiteral("%1 was written while it was sent, and has to be sent again").arg(path));
    }
    const FileConfiguration sent = FindFile(connection, target, "somebody has just made it");
    if (!pass::IsContentOf(sent, file.Size(), file.Md5())) {
        throw sync::core::SyncException(
            QStringLiteral("\"%1\" was sent, but what the service has is something else").arg(target.serverPath));
    }
    if (asJson) {
        output.Write(output::JsonObject(sent) + '\n');
    }
}

}  // namespace

void AddPutCommand(CommandRegistry& registry) {
    CLI::App* const command = registry.AddAction(
        "put", "Sends a file. One that is there is replaced, unless somebody changes it meanwhile.",
        [](ServiceConnection& connection, const Location& location, const Arguments& given, Output& output) {
            Put(connection, location, QString::fromStdString(given.path), given.isForced, given.isJson, output);
        });
    registry.MarkAsTakingFiles(command);
    registry.MarkAsWriting(command);
    registry.AddBandwidth(command);
    CommandRegistry::AddText(command, "FILE", "The file here, or - for standard input", registry.Given().path);
    CommandRegistry::AddText(command, "URL", "Where it goes: a file, or a folder that it goes into",
                             registry.Given().url);
    command->add_flag("-f,--force", registry.Given().isForced, "Replace whatever is there");
}

}  // namespace files
}  // namespace ovsync
