#include "client/sync/pull/PullPlan.h"

#include <utility>

#include "client/sync/local/PathNames.h"
#include "client/sync/pass/RemoteVersion.h"
#include "client/sync/pull/PullDecision.h"

namespace ovsync {
namespace pull {

using local::ConflictText;
using local::FolderOf;
using local::LocalEntry;
using local::LocalSnapshot;
using local::TemporaryBeside;
using pass::FileComparison;
using pass::HasIdentity;
using pass::LocalFileState;
using pass::LocalState;
using pass::PassReport;
using pass::PassSides;
using pass::RecordMaker;
using pass::RemoteFileState;
using pass::RemoteState;
using pass::RemoteTree;
using report::SyncEvent;
using store::ConflictCopy;
using store::FileRecord;
using store::RecordChanges;
using sync::config::FileConfiguration;

namespace {

/// Whether the service has a folder where the path was, or a file where a folder above it was.
bool IsInTheWay(const RemoteTree& remote, const QString& path) {
    if (remote.HasFolder(path)) {
        return true;
    }
    for (QString above = path; !above.isEmpty(); above = FolderOf(above)) {
        if (remote.HasFile(above)) {
            return true;
        }
    }
    return false;
}

}  // namespace

PullPlan::PullPlan(const PassSides& sides, const FileComparison& comparison, const RecordMaker& maker,
                   const RemoteTree& remote, PassReport& report)
    : _sides(sides), _comparison(comparison), _maker(maker), _remote(remote), _report(report) {
    for (const ConflictCopy& copy : _sides.records.Copies()) {
        _besideAlready[copy.path].insert(copy.identity, copy.copy);
    }
}

PullPlan::Deletions PullPlan::FindGone(const LocalSnapshot& snapshot) {
    Deletions deletions;
    for (const QString& path : _sides.records.FilePaths()) {
        if (!_remote.HasFile(path) && !_remote.IsRefused(path) && !_sides.exclusion.HasFileAt(path)) {
            _FindGoneFile(path, snapshot, deletions);
            _report.ThrowIfStopped();
        }
    }
    for (const QString& path : _sides.records.Folders()) {
        if (_remote.HasFolder(path) || _remote.IsRefused(path) || _sides.exclusion.HasFolderAt(path)) {
            continue;
        }
        if (snapshot.HasFolder(path)) {
            (IsInTheWay(_remote, path) ? deletions.inTheWay : deletions.others).folders.append(path);
        } else {
            deletions.records.forgottenFolders.append(path);
        }
    }
    return deletions;
}

void PullPlan::_FindGoneFile(const QString& path, const LocalSnapshot& snapshot, Deletions& deletions) {
    const LocalFileState here = _comparison.CompareHere(path, snapshot, _sides.records.FindFile(path));
    if (here.renewed) {
        deletions.records.files.append(*here.renewed);
    }
    PullSituation situation;
    situation.here = here.state;
    situation.there = _remote.HasFolder(path) ? RemoteState::Folder : RemoteState::Nothing;
    situation.hasRecord = true;
    switch (DecidePull(situation)) {
        case PullStep::Delete: {
            store::Placement removal;
            removal.record.path = path;
            removal.temporary = TemporaryBeside(path);
            removal.isRemoval = true;
            removal.old = here.entry->fingerprint;
            (IsInTheWay(_remote, path) ? deletions.inTheWay : deletions.others).files.append(removal);
            break;
        }
        case PullStep::KeepChanged:
            deletions.events.append(
                {SyncEvent::Kind::Kept, path, QStringLiteral("it was deleted on the service, but has changed here")});
            break;
        default:
            deletions.records.forgottenFiles.append(path);
            break;
    }
}

PullPlan::Folders PullPlan::FindFolders(const LocalSnapshot& snapshot) const {
    Folders folders;
    QSet<QString> missing;
    for (const QString& path : _remote.AllFolders()) {
        const auto here = snapshot.entries.find(path);
        if (snapshot.HasFolder(path)) {
            folders.records.folders.append(path);
        } else if (here != snapshot.entries.end()) {
            folders.events.append({SyncEvent::Kind::Refused, path,
                                   here->kind == LocalEntry::Kind::File
                                       ? QStringLiteral("it is a folder on the service and a file here")
                                       : QStringLiteral("it is a folder on the service, and neither file nor folder "
                                                        "here")});
        } else if (snapshot.HasFolder(FolderOf(path)) || missing.contains(FolderOf(path))) {
            missing.insert(path);
            folders.missing.append(path);
        }
    }
    return folders;
}

PullPlan::Fetches PullPlan::FindFetches(const LocalSnapshot& snapshot) {
    Fetches fetches;
    const RemoteTree::Files& files = _remote.AllFiles();
    for (auto file = files.begin(); file != files.end(); ++file) {
        if (snapshot.HasFolder(FolderOf(file.key()))) {
            _Decide(file.key(), file.value(), snapshot, fetches);
            _report.ThrowIfStopped();
        }
    }
    return fetches;
}

QString PullPlan::_CopyBeside(const QString& path, const FileConfiguration& remote) const {
    const QHash<QString, QString> copies = _besideAlready.value(path);
    for (auto copy = copies.begin(); copy != copies.end(); ++copy) {
        if (HasIdentity(remote, copy.key())) {
            return copy.value();
        }
    }
    return QString();
}

void PullPlan::_Decide(const QString& path, const FileConfiguration& remote, const LocalSnapshot& snapshot,
                       Fetches& fetches) {
    std::optional<FileRecord> record = _sides.records.FindFile(path);
    LocalFileState here = _comparison.CompareHere(path, snapshot, record);
    if (here.renewed) {
        record = here.renewed;
        fetches.records.files.append(*record);
    }
    const RemoteFileState there = _comparison.CompareThere(remote, record);
    if (there.failure) {
        _report.TellFailure(path, there.failure);
    }
    if (there.renewed) {
        fetches.records.files.append(*there.renewed);
    }
    PullSituation situation;
    situation.here = here.state;
    situation.hasRecord = record.has_value();
    situation.there = there.state;
    QString copyBeside;
    if (there.state != RemoteState::Same && here.entry && here.entry->kind == LocalEntry::Kind::File) {
        situation.isSameContent = _comparison.HasContentOf(path, remote, here);
        copyBeside = _CopyBeside(path, remote);
        situation.isBesideAlready = !copyBeside.isEmpty();
    }

    PullOrder order;
    order.path = path;
    order.remote = remote;
    order.here = here.entry;
    order.md5Here = here.md5;
    switch (DecidePull(situation)) {
        case PullStep::Fetch:
            fetches.orders.push_back(std::move(order));
            break;
        case PullStep::Replace:
            order.target = PullOrder::Target::Replace;
            fetches.orders.push_back(std::move(order));
            break;
        case PullStep::FetchBeside:
            order.target = PullOrder::Target::Beside;
            _inConflict.insert(path);
            fetches.orders.push_back(std::move(order));
            break;
        case PullStep::StillBeside:
            _inConflict.insert(path);
            fetches.events.append({SyncEvent::Kind::Conflict, path, ConflictText(copyBeside)});
            break;
        case PullStep::Record:
            fetches.records.files.append(_maker.Make(path, remote, here));
            break;
        case PullStep::Blocked:
            fetches.events.append({SyncEvent::Kind::Refused, path,
                                   here.state == LocalState::Folder
                                       ? QStringLiteral("it is a file on the service and a folder here")
                                       : QStringLiteral("it is a file on the service, and neither file nor folder "
                                                        "here")});
            break;
        default:
            break;
    }
}

RecordChanges PullPlan::FindEndedConflicts() const {
    RecordChanges changes;
    for (const ConflictCopy& copy : _sides.records.Copies()) {
        // The disk is asked, because the snapshot has no excluded files.
        if (!_inConflict.contains(copy.path) && !_sides.tree.Look(copy.copy)) {
            changes.forgottenCopies.append(copy);
        }
    }
    return changes;
}

}  // namespace pull
}  // namespace ovsync
