#include "client/sync/push/PushPlan.h"

#include <algorithm>
#include <set>

#include "client/sync/local/PathNames.h"
#include "client/sync/pass/RemoteContent.h"
#include "client/sync/pass/RemoteVersion.h"
#include "client/sync/push/PushDecision.h"

namespace ovsync {
namespace push {

using local::ConflictText;
using local::FolderOf;
using local::LocalEntry;
using local::LocalSnapshot;
using pass::IdentityOf;
using pass::IsContentOf;
using pass::LocalFileState;
using pass::LocalState;
using pass::Md5OnService;
using pass::PassContext;
using pass::RemoteState;
using pass::RemoteTree;
using report::SyncEvent;
using store::ConflictCopy;
using store::FileRecord;
using store::RecordDatabase;
using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;

namespace {

/// So much may be sent twice, in bytes.
constexpr qint64 TrialSize = qint64(64) * 1024;

}  // namespace

PushPlan::PushPlan(PassContext& context, const RemoteTree& remote, const LocalSnapshot& snapshot)
    : _context(context), _remote(remote), _snapshot(snapshot) {
    for (const ConflictCopy& copy : _context.Records().Copies()) {
        _copies.insert(copy.copy, copy.contentMd5);
        _copiesOf.insert(copy.path, copy);
    }
    for (const QString& folder : _context.Records().Folders()) {
        _knownFolders.insert(folder);
    }
}

std::deque<PushOrder> PushPlan::FindOrders() {
    std::set<QString> paths;
    for (auto entry = _snapshot.entries.begin(); entry != _snapshot.entries.end(); ++entry) {
        paths.insert(entry.key());
    }
    for (const QString& path : _context.Records().FilePaths()) {
        if (!_context.Excluded().HasFileAt(path)) {
            paths.insert(path);
        }
    }
    {
        RecordDatabase::Transaction transaction(_context.Records());
        for (const QString& path : paths) {
            if (!_remote.IsRefused(path)) {
                _Decide(path);
                _context.ThrowIfStopped();
            }
        }
        _TellDeletedFolders();
        transaction.Commit();
    }
    _MakeFolders();
    const auto isBlocked = [this](const PushOrder& order) { return _blockedFolders.contains(FolderOf(order.path)); };
    _orders.erase(std::remove_if(_orders.begin(), _orders.end(), isBlocked), _orders.end());
    return std::move(_orders);
}

void PushPlan::_Decide(const QString& path) {
    std::optional<FileRecord> record = _context.Records().FindFile(path);
    LocalFileState here = _context.Compare(path, _snapshot, record);
    if (here.state == LocalState::Other) {
        _context.Report(SyncEvent::Kind::Skipped, path, QStringLiteral("it is neither a file nor a folder"));
        return;
    }
    if (here.state == LocalState::Unknown && _copies.contains(path)) {
        _context.Read(path, here);
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
        situation.there = _context.StateOf(path, remote, record);
    } else if (_remote.HasFolder(path)) {
        situation.there = RemoteState::Folder;
    }
    std::optional<ConflictCopy> resolved;
    const bool isOther = situation.there == RemoteState::New || situation.there == RemoteState::Older;
    if (isOther && here.entry && here.entry->kind == LocalEntry::Kind::File) {
        situation.isSameContent = _context.HasContentOf(path, remote, here) || _HasFetchedContentOf(path, remote, here);
        resolved = _FindResolved(path, remote);
        situation.isResolved = resolved.has_value();
    }

    switch (DecidePush(situation)) {
        case PushStep::SendNew:
        case PushStep::SendChanged:
            _Order(path, *here.entry, resolved ? resolved->contentMd5 : record ? record->contentMd5 : QString());
            break;
        case PushStep::Record:
            _context.Adopt(path, remote, here);
            break;
        case PushStep::ForgetRecord:
            _context.Records().ForgetFile(path);
            break;
        case PushStep::TellDeletedHere:
            _context.Report(SyncEvent::Kind::DeletedHere, path);
            break;
        case PushStep::TellNewerThere:
            _context.Report(SyncEvent::Kind::NewerThere, path);
            break;
        case PushStep::TellGone:
            _context.Report(SyncEvent::Kind::Kept, path,
                            QStringLiteral("it was deleted on the service, and is not sent again"));
            break;
        case PushStep::Conflict:
            _context.Report(SyncEvent::Kind::Conflict, path, _ConflictText(path, remote));
            break;
        case PushStep::ConflictWithDeletion:
            _context.Report(SyncEvent::Kind::Conflict, path,
                            QStringLiteral("it changed here, and was deleted on the service"));
            break;
        case PushStep::Blocked:
            _context.Report(SyncEvent::Kind::Refused, path,
                            here.state == LocalState::Folder
                                ? QStringLiteral("it is a folder here and a file on the service")
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
    order.looksBefore = !_remote.HasChecksums();
    order.size = here.fingerprint.size;
    // An empty folder may be one of the service itself.
    order.triesConditions =
        order.looksBefore && !_remote.AllFiles().isEmpty() && order.isNew && order.size > 0 && order.size <= TrialSize;
    _orders.push_back(order);
    _NeedFoldersOf(path);
}

QString PushPlan::_ConflictText(const QString& path, const FileConfiguration& remote) const {
    for (const ConflictCopy& copy : _copiesOf.values(path)) {
        if (copy.identity == IdentityOf(remote)) {
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
    _context.Read(path, here);
    return _IsContentThere(path, remote, here.md5);
}

bool PushPlan::_IsContentThere(const QString& path, const FileConfiguration& remote, const QString& md5) {
    try {
        return !md5.isEmpty() && Md5OnService(_context.Service(), path, remote.size) == md5;
    } catch (const std::exception&) {
        _context.ReportFailure(path, std::current_exception());
        return false;
    }
}

std::optional<ConflictCopy> PushPlan::_FindResolved(const QString& path, const FileConfiguration& remote) {
    for (const ConflictCopy& copy : _copiesOf.values(path)) {
        // The disk is asked, because the snapshot has no excluded files.
        if (_context.Tree().Look(copy.copy)) {
            continue;
        }
        if (copy.identity.isEmpty() ? _IsContentThere(path, remote, copy.contentMd5)
                                    : copy.identity == IdentityOf(remote)) {
            return copy;
        }
    }
    return std::nullopt;
}

void PushPlan::_TellDeletedFolders() {
    for (const QString& path : _knownFolders) {
        if (_snapshot.entries.contains(path) || _context.Excluded().HasFolderAt(path)) {
            continue;
        }
        if (_remote.HasFolder(path)) {
            _context.Report(SyncEvent::Kind::DeletedHere, path);
        } else if (!_remote.IsRefused(path)) {
            _context.Records().ForgetFolder(path);
        }
    }
}

void PushPlan::_MakeFolders() {
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
        const bool isBlocked =
            _blockedFolders.contains(path) || _blockedFolders.contains(FolderOf(path)) || _remote.IsRefused(path);
        if (!isBlocked && !_neededFolders.contains(path)) {
            _context.Report(SyncEvent::Kind::Kept, path,
                            QStringLiteral("it was deleted on the service, and is not made again"));
        } else if (isBlocked || !_MakeFolder(path)) {
            _blockedFolders.insert(path);
        }
        _context.ThrowIfStopped();
    }
}

bool PushPlan::_MakeFolder(const QString& path) {
    if (!_context.Options().isDryRun) {
        try {
            FolderConfiguration folder = _context.Service().FolderAt(path);
            if (_context.Service().folders->FolderExists(folder)) {
                _context.Report(
                    SyncEvent::Kind::Refused, path,
                    QStringLiteral("the service has something of this name that it does not list; what lies "
                                   "in it stays here"));
                return false;
            }
            _context.Service().folders->CreateFolder(folder, QString(), false);
            _context.ReportSuccess();
            _context.Records().WriteFolder(path);
        } catch (const std::exception&) {
            _context.ReportFailure(path, std::current_exception());
            return false;
        }
    }
    _context.Report(SyncEvent::Kind::FolderSent, path);
    return true;
}

void PushPlan::_NeedFoldersOf(const QString& path) {
    for (QString folder = FolderOf(path); !folder.isEmpty(); folder = FolderOf(folder)) {
        _neededFolders.insert(folder);
    }
}

}  // namespace push
}  // namespace ovsync
