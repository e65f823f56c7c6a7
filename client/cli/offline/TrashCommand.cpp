#include "client/cli/offline/TrashCommand.h"

#include "client/wire/DateReader.h"

#include <CLI/CLI.hpp>
#include <QRegularExpression>

#include <QDateTime>
#include <nlohmann/json.hpp>

#include "client/cli/input/NumberRange.h"
#include "client/cli/input/Refusal.h"
#include "client/cli/input/UsageError.h"
#include "client/cli/offline/SyncedFolder.h"
#include "client/cli/output/Complaint.h"
#include "client/cli/output/DateText.h"
#include "client/store/RecordDatabase.h"
#include "client/sync/local/LocalTree.h"
#include "client/sync/local/PathNames.h"
#include "client/sync/local/Trash.h"

namespace ovsync {
namespace offline {

using commands::CommandRegistry;
using input::Arguments;
using input::Refusal;
using input::UsageError;
using local::LocalTree;
using local::Trash;
using local::TrashEntry;
using local::TrashTime;
using output::Complain;
using output::DateText;
using output::ExitCode;
using output::Output;
using report::SyncEvent;
using store::RecordDatabase;

namespace {

const int MostDays = 36500;

const char* const TrashFooter =
    "Exit status: 0 done, 1 there is no such file in the trash, something is in the way or cannot be read or removed, "
    "or a pass has the folder open, 2 wrong usage.";

std::optional<QString> Given(const std::optional<std::string>& text) {
    return text ? std::make_optional(QString::fromStdString(*text)) : std::nullopt;
}

/// "2026-11-20T10:15:30Z", and "2026-11-20T10:15:30Z-2" where that second needed a second folder. Thread-safe.
QByteArray TrashTimeText(const TrashTime& time) {
    const QByteArray text = DateText(time.time);
    return time.number == 1 ? text : text + '-' + QByteArray::number(time.number);
}

/// Reads what TrashTimeText made. Throws UsageError when it is something else.
TrashTime ReadTrashTime(const QString& text) {
    static const QRegularExpression pattern(QStringLiteral("\\A(.*Z)(?:-([2-9]|[1-9][0-9]{1,8}))?\\z"));
    const QRegularExpressionMatch match = pattern.match(text);
    const QByteArray date = match.captured(1).toUtf8();
    const QString number = match.captured(2);
    TrashTime time{wire::ReadDate(date.constData(), static_cast<size_t>(date.size())),
                   number.isEmpty() ? 1 : number.toInt()};
    if (!time.time.isValid()) {
        throw input::UsageError(QStringLiteral("--from \"%1\": not a time that \"ovsync trash list\" shows, such as "
                                               "2026-11-20T10:15:30Z")
                                    .arg(text));
    }
    return time;
}

Trash TrashOf(LocalTree& tree, int days = Trash::DefaultDays) {
    return {tree, QDateTime::currentDateTimeUtc(), days};
}

QByteArray TrashLine(const TrashEntry& entry, const Output& output) {
    return TrashTimeText(entry.from).leftJustified(20) + "  " + QByteArray::number(entry.size).rightJustified(12) +
           "  " + output.Shown(entry.path) + '\n';
}

QByteArray JsonObject(const TrashEntry& entry) {
    const nlohmann::ordered_json json = {{"time", DateText(entry.from.time).toStdString()},
                                         {"from", TrashTimeText(entry.from).toStdString()},
                                         {"size", entry.size},
                                         {"path", entry.path.toStdString()}};
    return QByteArray::fromStdString(json.dump());
}

void ListTrash(const QString& directory, bool asJson, Output& output) {
    LocalTree tree(SyncedFolder(directory));
    const QVector<TrashEntry> entries = TrashOf(tree).Entries();
    if (!asJson) {
        for (const TrashEntry& entry : entries) {
            output.Write(TrashLine(entry, output));
        }
        return;
    }
    const char* separator = "[\n";
    for (const TrashEntry& entry : entries) {
        output.Write(separator + JsonObject(entry));
        separator = ",\n";
    }
    output.Write(entries.isEmpty() ? "[]\n" : "\n]\n");
}

void RestoreFromTrash(const QString& directory, const QString& path, const std::optional<QString>& from,
                      const std::optional<QString>& to, bool asJson, Output& output) {
    const std::optional<TrashTime> time = from ? std::make_optional(ReadTrashTime(*from)) : std::nullopt;
    const QString target = to.value_or(path);
    const QString reason = to ? local::ReasonAgainstPath(target) : QString();
    if (!reason.isEmpty()) {
        throw UsageError(
            QStringLiteral("--to \"%1\": this is no path for a file below %2: %3").arg(target, directory, reason));
    }
    const QString root = SyncedFolder(directory);
    const RecordDatabase lock(root, RecordDatabase::Access::Change);
    LocalTree tree(root);
    Trash trash = TrashOf(tree);
    const std::optional<TrashEntry> entry = trash.Find(path, time);
    if (!entry) {
        throw Refusal(QStringLiteral("There is no file \"%1\"%2 in the trash; \"ovsync trash list\" shows what is")
                          .arg(path, from ? QStringLiteral(" of ") + *from : QString()));
    }
    const QString inTheWay = trash.Restore(*entry, target);
    if (!inTheWay.isEmpty()) {
        throw Refusal(QStringLiteral("There is something at \"%1\" already, which is never overwritten. Restore the "
                                     "file under another path with --to NAME")
                          .arg(inTheWay));
    }
    if (asJson) {
        const nlohmann::ordered_json json = {{"from", TrashTimeText(entry->from).toStdString()},
                                             {"path", path.toStdString()},
                                             {"to", target.toStdString()}};
        output.Write(QByteArray::fromStdString(json.dump()) + '\n');
    }
}

ExitCode EmptyTrash(const Arguments& given, Output& output) {
    const QString root = SyncedFolder(QString::fromStdString(given.directory));
    const std::optional<int> days = given.olderThan;
    const RecordDatabase lock(root, RecordDatabase::Access::Change);
    LocalTree tree(root);
    const QVector<SyncEvent> failures = days ? TrashOf(tree, *days).RemoveOld() : TrashOf(tree).RemoveAll();
    nlohmann::ordered_json left = nlohmann::ordered_json::array();
    for (const SyncEvent& failure : failures) {
        Complain({"file", failure.path + QStringLiteral(": ") + failure.detail}, ExitCode::Refused, given.Errors());
        left.push_back({{"path", failure.path.toStdString()}, {"detail", failure.detail.toStdString()}});
    }
    if (given.isJson) {
        output.Write(QByteArray::fromStdString(nlohmann::ordered_json({{"left", left}}).dump()) + '\n');
    }
    return failures.isEmpty() ? ExitCode::Done : ExitCode::Refused;
}

}  // namespace

void AddTrashCommand(commands::CommandRegistry& registry) {
    CLI::App* const trash =
        registry.AddGroup("trash", "Looks after what pulls replaced or deleted in a local folder.", TrashFooter);
    CLI::App* command =
        registry.AddLocal(*trash, "list", "Lists it, a line each with time, size and path, in order of time and path.",
                          [](const Arguments& given, Output& output) {
                              ListTrash(QString::fromStdString(given.directory), given.isJson, output);
                              return ExitCode::Done;
                          });
    CommandRegistry::AddText(command, "DIR", "The local folder", registry.Given().directory);

    command = registry.AddLocal(*trash, "restore", "Brings a file back to its place, unless something is there.",
                                [](const Arguments& given, Output& output) {
                                    RestoreFromTrash(QString::fromStdString(given.directory),
                                                     QString::fromStdString(given.path), Given(given.from),
                                                     Given(given.to), given.isJson, output);
                                    return ExitCode::Done;
                                });
    CommandRegistry::AddText(command, "DIR", "The local folder", registry.Given().directory);
    CommandRegistry::AddText(command, "PATH", "The file, as list shows it", registry.Given().path);
    command
        ->add_option("--from", registry.Given().from,
                     "Bring what was replaced or deleted at TIME, as list shows it (the newest unless given)")
        ->type_name("TIME");
    command->add_option("--to", registry.Given().to, "Bring it to NAME, another path below DIR")->type_name("NAME");

    command = registry.AddLocal(*trash, "empty", "Removes it for good.",
                                [](const Arguments& given, Output& output) { return EmptyTrash(given, output); });
    CommandRegistry::AddText(command, "DIR", "The local folder", registry.Given().directory);
    command
        ->add_option("--older-than", registry.Given().olderThan,
                     "Remove only what was replaced or deleted more than DAYS ago")
        ->type_name("DAYS")
        ->check(input::WholeNumber(0, MostDays));
}

}  // namespace offline
}  // namespace ovsync
