#include "client/cli/commands/TrashCommand.h"

#include <QDateTime>
#include <QFileInfo>
#include <nlohmann/json.hpp>

#include "client/cli/commands/TrashTimeText.h"
#include "client/cli/input/AbsolutePath.h"
#include "client/cli/input/Refusal.h"
#include "client/cli/input/UsageError.h"
#include "client/cli/output/Complaint.h"
#include "client/cli/output/DateText.h"
#include "client/store/RecordDatabase.h"
#include "client/sync/local/LocalTree.h"
#include "client/sync/local/PathNames.h"
#include "client/sync/local/Trash.h"

namespace ovsync {
namespace commands {

using input::AbsolutePath;
using input::Refusal;
using input::UsageError;
using local::LocalTree;
using local::Trash;
using local::TrashEntry;
using local::TrashTime;
using output::Complain;
using output::DateText;
using output::ExitCode;
using output::JsonObject;
using output::Output;
using report::SyncEvent;
using store::RecordDatabase;

namespace {

QString SyncedFolder(const QString& directory) {
    QString root = AbsolutePath(directory);
    const QFileInfo hidden(root + QLatin1Char('/') + RecordDatabase::HiddenFolder());
    if (!hidden.isDir() || hidden.isSymLink()) {
        throw UsageError(QStringLiteral("%1 is no synced folder: it has no folder \"%2\" in it")
                             .arg(directory, RecordDatabase::HiddenFolder()));
    }
    return root;
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

}  // namespace

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

ExitCode EmptyTrash(const QString& directory, std::optional<int> days, bool asJson, Output& output) {
    const QString root = SyncedFolder(directory);
    const RecordDatabase lock(root, RecordDatabase::Access::Change);
    LocalTree tree(root);
    const QVector<SyncEvent> failures = days ? TrashOf(tree, *days).RemoveOld() : TrashOf(tree).RemoveAll();
    nlohmann::ordered_json left = nlohmann::ordered_json::array();
    for (const SyncEvent& failure : failures) {
        Complain(failure.path + QStringLiteral(": ") + failure.detail);
        left.push_back({{"path", failure.path.toStdString()}, {"detail", failure.detail.toStdString()}});
    }
    if (asJson) {
        output.Write(QByteArray::fromStdString(nlohmann::ordered_json({{"left", left}}).dump()) + '\n');
    }
    return failures.isEmpty() ? ExitCode::Done : ExitCode::Refused;
}

}  // namespace commands
}  // namespace ovsync
