#include "client/sync/push/PushPlan.h"

#include <algorithm>
#include <set>

#include "client/sync/local/PathNames.h"
#include "client/sync/pass/RemoteVersion.h"
#include "client/sync/push/PushDecision.h"

namespace ovsync {
namespace push {

using local::ConflictText;
using local::FolderOf;
using local::LocalEntry;
using local::LocalSnapshot;
using pass::FileComparison;
using pass::HasIdentity;
using pass::IsContentOf;
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
using sync::config::FileConfiguration;

namespace {

/// So much may be sent twice, in bytes.
constexpr qint64 TrialSize = qint64(64) * 1024;
constexpr std::chrono::milliseconds MoreThanASecond(1200);

}  // namespace

PushPlan::PushPlan(const PassSides& sides, const FileComparison& comparison, const RecordMaker& maker,
                   const RemoteTree& remote, const LocalSnapshot& snapshot, PassReport& report)
    : _sides(sides), _comparison(comparison), _maker(maker), _remote(remote), _snapshot(snapshot), _report(report) {
    for (const ConflictCopy& copy : _sides.records.Copies()) {
        _copies.insert(copy.copy, copy.contentMd5);
        _copiesOf.insert(copy.path, copy);
    }
    for (const QString& folder : _sides.records.Folders()) {
        _knownFolders.insert(folder);
    }
}

PushPlan::Work PushPlan::Find() {
    std::set<QString> paths;
    for (auto entry = _snapshot.entries.begin(); entry != _snapshot.entries.end(); ++entry) {
        paths.insert(entry.key());
    }
    for (const QString& path : _sides.records.FilePaths()) {
        if (!_sides.exclusion.HasFileAt(path)) {
            paths.insert(path);
        }
    }
    for (const QString& path : paths) {
        if (!_remote.IsRefused(path)) {
            _Decide(path);
            _report.ThrowIfStopped();
        }
    }
    _FindDeletedFolders();
    _FindFolders();
    const auto isBlocked = [this](const PushOrder& order) { return _blockedFolders.contains(FolderOf(order.path)); };
    std::deque<PushOrder>& orders = _work.orders;
    orders.erase(std::remove_if(orders.begin(), orders.end(), isBlocked), orders.end());
    return std::move(_work);
}

void PushPlan::_Decide(const QString& path) {
    std::optional<FileRecord> record = _sides.records.FindFile(path);
    LocalFileState here = _comparison.CompareHere(path, _snapshot, record);
    if (here.renewed) {
        record = here.renewed;
        _work.records.files.append(*record);
    }
    if (here.state == LocalState::Other) {
        _Tell(SyncEvent::Kind::Skipped, path, QStringLiteral("it is neither a file nor a folder"));
        return;
    }
    if (here.state == LocalState::Unknown && _copies.contains(path)) {
        _comparison.Read(path, here);
        // Once somebody wrote into it, it is a file of this side.
        if (here.md5 == _copies.value(path)) {
            return;
        }
    }
    const bool isFileThere = _remote.HasFile(path);
    const FileConfiguration remote = _remote.AllFiles().value(path);
    PushSituation situation;
    situation.here = here.state;
    situation.hasRecord = record.has_value();
    if (isFileThere) {
        const RemoteFileState there = _comparison.CompareThere(remote, record);
        if (there.failure) {
            _report.TellFailure(path, there.failure);
        }
        if (there.renewed) {
            _work.records.files.append(*there.renewed);
        }
        situation.there = there.state;
    } else if (_remote.HasFolder(path)) {
        situation.there = RemoteState::Folder;
    }
    std::optional<ConflictCopy> resolved;
    const bool isOther = situation.there == RemoteState::New || situation.there == RemoteState::Older;
    if (isOther && here.entry && here.entry->kind == LocalEntry::Kind::File) {
        situation.isSameContent =
            _comparison.HasContentOf(path, remote, here) || _HasFetchedContentOf(path, remote, here);
        resolved = _FindResolved(path, remote);
        situation.isResolved = resolved.has_value();
    }

    switch (DecidePush(situation)) {
        case PushStep::SendNew:
        case PushStep::SendChanged:
            _Order(path, *here.entry, resolved ? resolved->contentMd5 : record ? record->contentMd5 : QString());
            break;
        case PushStep::Record:
            _work.records.files.append(_maker.Make(path, remote, here));
            break;
        case PushStep::ForgetRecord:
            _work.records.forgottenFiles.append(path);
            break;
        case PushStep::TellDeletedHere:
            _Tell(SyncEvent::Kind::DeletedHere, path);
            break;
        case PushStep::TellNewerThere:
            _Tell(SyncEvent::Kind::NewerThere, path);
            break;
        case PushStep::TellGone:
            _Tell(SyncEvent::Kind::Kept, path, QStringLiteral("it was deleted on the service, and is not sent again"));
            break;
        case PushStep::Conflict:
            _Tell(SyncEvent::Kind::Conflict, path, _ConflictText(path, remote));
            break;
        case PushStep::ConflictWithDeletion:
            _Tell(SyncEvent::Kind::Conflict, path, QStringLiteral("it changed here, and was deleted on the service"));
            break;
        case PushStep::Blocked:
            _Tell(SyncEvent::Kind::Refused, path,
                  here.state == LocalState::Folder ? QStringLiteral("it is a folder here and a file on the service")
                                                   : QStringLiteral("it is a file here and a folder on the service"));
            _blockedFolders.insert(path);
            break;
        case PushStep::Nothing:
            break;
    }
}

void PushPlan::_Order(const QString& path, const LocalEntry& here, const QString& knownMd5) {
    PushOrder order;
    order.path = path;
    order.isNew = !_remote.HasFile(path);
    order.remote = _remote.AllFiles().value(path);
    order.knownMd5 = knownMd5;
    order.notBefore = _EndOfSecondOf(order.remote);
    order.looksBefore = !_remote.HasChecksums();
    order.size = here.fingerprint.size;
    order.isExecutable = here.IsExecutable();
    // An empty folder may be one of the service itself.
    order.triesConditions =
        order.looksBefore && !_remote.AllFiles().isEmpty() && order.isNew && order.size > 0 && order.size <= TrialSize;
    _work.orders.push_back(order);
    _NeedFoldersOf(path);
}

std::chrono::steady_clock::time_point PushPlan::_EndOfSecondOf(const FileConfiguration& remote) const {
    const bool isThatOfListing =
        _maker.IsInDoubt(remote) && remote.lastModifiedDate.toSecsSinceEpoch() == _maker.ListedAt().toSecsSinceEpoch();
    return isThatOfListing ? std::chrono::steady_clock::now() + MoreThanASecond
                           : std::chrono::steady_clock::time_point();
}

QString PushPlan::_ConflictText(const QString& path, const FileConfiguration& remote) const {
    for (const ConflictCopy& copy : _copiesOf.values(path)) {
        if (HasIdentity(remote, copy.identity)) {
            return ConflictText(copy.copy);
        }
    }
    return QStringLiteral("it changed here and on the service, whose version a pull puts beside it");
}

bool PushPlan::_HasFetchedContentOf(const QString& path, const FileConfiguration& remote, LocalFileState& here) {
    const bool canTell = remote.md5Checksum.isEmpty() && here.state != LocalState::Unchanged &&
                         IsContentOf(remote, here.entry->fingerprint.size, QString());
    if (!canTell) {
        return false;
    }
    _comparison.Read(path, here);
    return _IsContentThere(path, remote, here.md5);
}

bool PushPlan::_IsContentThere(const QString& path, const FileConfiguration& remote, const QString& md5) {
    try {
        return !md5.isEmpty() && _comparison.IsContentThere(path, remote.size, md5);
    } catch (const std::exception&) {
        _report.TellFailure(path, std::current_exception());
        return false;
    }
}

std::optional<ConflictCopy> PushPlan::_FindResolved(const QString& path, const FileConfiguration& remote) {
    for (const ConflictCopy& copy : _copiesOf.values(path)) {
        // The disk is asked, because the snapshot has no excluded files.
        if (_sides.tree.Look(copy.copy)) {
            continue;
        }
        if (copy.identity.isEmpty() ? _IsContentThere(path, remote, copy.contentMd5)
                                    : HasIdentity(remote, copy.identity)) {
            return copy;
        }
    }
    return std::nullopt;
}

void PushPlan::_FindDeletedFolders() {
    for (const QString& path : _knownFolders) {
        if (_snapshot.entries.contains(path) || _sides.exclusion.HasFolderAt(path)) {
            continue;
        }
        if (_remote.HasFolder(path)) {
            _Tell(SyncEvent::Kind::DeletedHere, path);
        } else if (!_remote.IsRefused(path)) {
            _work.records.forgottenFolders.append(path);
        }
    }
}

void PushPlan::_FindFolders() {
    std::set<QString> missing;
    for (auto entry = _snapshot.entries.begin(); entry != _snapshot.entries.end(); ++entry) {
        const QString& path = entry.key();
        if (entry->kind != LocalEntry::Kind::Folder || _remote.HasFolder(path)) {
            continue;
        }
        missing.insert(path);
        if (!_knownFolders.contains(path)) {
            _neededFolders.insert(path);
            _NeedFoldersOf(path);
        }
    }
    for (const QString& path : missing) {
        if (_blockedFolders.contains(path) || _blockedFolders.contains(FolderOf(path)) || _remote.IsRefused(path)) {
            _blockedFolders.insert(path);
        } else if (_neededFolders.contains(path)) {
            _work.folders.append(path);
        } else {
            _Tell(SyncEvent::Kind::Kept, path, QStringLiteral("it was deleted on the service, and is not made again"));
        }
    }
}

void PushPlan::_NeedFoldersOf(const QString& path) {
    for (QString folder = FolderOf(path); !folder.isEmpty(); folder = FolderOf(folder)) {
        _neededFolders.insert(folder);
    }
}

void PushPlan::_Tell(SyncEvent::Kind kind, const QString& path, const QString& detail) {
    _work.events.append({kind, path, detail});
}

}  // namespace push
}  // namespace ovsync
