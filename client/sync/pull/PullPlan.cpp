#include "client/sync/pull/PullPlan.h"

#include <utility>

#include "client/sync/local/LocalError.h"
#include "client/sync/local/PathNames.h"
#include "client/sync/pass/RemoteVersion.h"
#include "client/sync/pull/PullDecision.h"

namespace ovsync {
namespace pull {

using local::ConflictText;
using local::FolderOf;
using local::LocalEntry;
using local::LocalError;
using local::LocalSnapshot;
using local::TemporaryBeside;
using pass::IdentityOf;
using pass::LocalFileState;
using pass::LocalState;
using pass::PassContext;
using pass::RemoteState;
using pass::RemoteTree;
using report::SyncEvent;
using store::ConflictCopy;
using store::FileRecord;
using store::RecordDatabase;
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

PullPlan::PullPlan(PassContext& context) : _context(context) {
    for (const ConflictCopy& copy : _context.Records().Copies()) {
        _besideAlready[copy.path].insert(copy.identity, copy.copy);
    }
}

void PullPlan::FindGone(const RemoteTree& remote, const LocalSnapshot& snapshot, Gone& inTheWay, Gone& others) {
    RecordDatabase::Transaction transaction(_context.Records());
    for (const QString& path : _context.Records().FilePaths()) {
        if (!remote.HasFile(path) && !remote.IsRefused(path) && !_context.Excluded().HasFileAt(path)) {
            _FindGoneFile(path, remote, snapshot, IsInTheWay(remote, path) ? inTheWay : others);
            _context.ThrowIfStopped();
        }
    }
    for (const QString& path : _context.Records().Folders()) {
        if (remote.HasFolder(path) || remote.IsRefused(path) || _context.Excluded().HasFolderAt(path)) {
            continue;
        }
        const auto here = snapshot.entries.find(path);
        if (here != snapshot.entries.end() && here->kind == LocalEntry::Kind::Folder) {
            (IsInTheWay(remote, path) ? inTheWay : others).folders.append(path);
        } else {
            _context.Records().ForgetFolder(path);
        }
    }
    transaction.Commit();
}

void PullPlan::_FindGoneFile(const QString& path, const RemoteTree& remote, const LocalSnapshot& snapshot, Gone& gone) {
    std::optional<FileRecord> record = _context.Records().FindFile(path);
    const LocalFileState here = _context.Compare(path, snapshot, record);
    PullSituation situation;
    situation.here = here.state;
    situation.there = remote.HasFolder(path) ? RemoteState::Folder : RemoteState::Nothing;
    situation.hasRecord = true;
    switch (DecidePull(situation)) {
        case PullStep::Delete: {
            store::Placement removal;
            removal.record.path = path;
            removal.temporary = TemporaryBeside(path);
            removal.isRemoval = true;
            removal.old = here.entry->fingerprint;
            gone.files.append(removal);
            break;
        }
        case PullStep::KeepChanged:
            _context.Report(SyncEvent::Kind::Kept, path,
                            QStringLiteral("it was deleted on the service, but has changed here"));
            break;
        default:
            _context.Records().ForgetFile(path);
            break;
    }
}

std::deque<PullOrder> PullPlan::FindOrders(const RemoteTree& remote, LocalSnapshot& snapshot) {
    std::deque<PullOrder> orders;
    RecordDatabase::Transaction transaction(_context.Records());
    _MakeFolders(remote, snapshot);
    const RemoteTree::Files& files = remote.AllFiles();
    for (auto file = files.begin(); file != files.end(); ++file) {
        if (!_blockedFolders.contains(FolderOf(file.key()))) {
            _Decide(file.key(), file.value(), snapshot, orders);
            _context.ThrowIfStopped();
        }
    }
    transaction.Commit();
    return orders;
}

void PullPlan::_MakeFolders(const RemoteTree& remote, LocalSnapshot& snapshot) {
    for (const QString& path : remote.AllFolders()) {
        if (_blockedFolders.contains(FolderOf(path)) || !_MakeFolder(path, snapshot)) {
            _blockedFolders.insert(path);
        } else {
            _context.Records().WriteFolder(path);
        }
    }
}

bool PullPlan::_MakeFolder(const QString& path, LocalSnapshot& snapshot) {
    const auto here = snapshot.entries.find(path);
    if (here != snapshot.entries.end()) {
        const bool isFolder = here->kind == LocalEntry::Kind::Folder;
        if (!isFolder) {
            _context.Report(SyncEvent::Kind::Refused, path,
                            here->kind == LocalEntry::Kind::File
                                ? QStringLiteral("it is a folder on the service and a file here")
                                : QStringLiteral("it is a folder on the service, and neither file nor folder here"));
        }
        return isFolder;
    }
    if (!_context.Options().isDryRun) {
        try {
            _context.Tree().MakeFolder(path);
        } catch (const LocalError&) {
            _context.ReportFailure(path, std::current_exception());
            return false;
        }
    }
    LocalEntry folder;
    folder.kind = LocalEntry::Kind::Folder;
    snapshot.entries.insert(path, folder);
    _context.Report(SyncEvent::Kind::FolderMade, path);
    return true;
}

void PullPlan::_Decide(const QString& path, const FileConfiguration& remote, const LocalSnapshot& snapshot,
                       std::deque<PullOrder>& orders) {
    std::optional<FileRecord> record = _context.Records().FindFile(path);
    LocalFileState here = _context.Compare(path, snapshot, record);
    PullSituation situation;
    situation.here = here.state;
    situation.hasRecord = record.has_value();
    situation.there = _context.StateOf(path, remote, record);
    if (situation.there != RemoteState::Same && here.entry && here.entry->kind == LocalEntry::Kind::File) {
        situation.isSameContent = _context.HasContentOf(path, remote, here);
        situation.isBesideAlready = _besideAlready.value(path).contains(IdentityOf(remote));
    }

    PullOrder order;
    order.path = path;
    order.remote = remote;
    order.here = here.entry;
    order.md5Here = here.md5;
    switch (DecidePull(situation)) {
        case PullStep::Fetch:
            orders.push_back(std::move(order));
            break;
        case PullStep::Replace:
            order.target = PullOrder::Target::Replace;
            orders.push_back(std::move(order));
            break;
        case PullStep::FetchBeside:
            order.target = PullOrder::Target::Beside;
            _inConflict.insert(path);
            orders.push_back(std::move(order));
            break;
        case PullStep::StillBeside:
            _inConflict.insert(path);
            _context.Report(SyncEvent::Kind::Conflict, path,
                            ConflictText(_besideAlready.value(path).value(IdentityOf(remote))));
            break;
        case PullStep::Record:
            _context.Adopt(path, remote, here);
            break;
        case PullStep::Blocked:
            _context.Report(SyncEvent::Kind::Refused, path,
                            here.state == LocalState::Folder
                                ? QStringLiteral("it is a file on the service and a folder here")
                                : QStringLiteral("it is a file on the service, and neither file nor folder here"));
            break;
        default:
            break;
    }
}

void PullPlan::ForgetCopies() {
    RecordDatabase::Transaction transaction(_context.Records());
    for (const ConflictCopy& copy : _context.Records().Copies()) {
        // The disk is asked, because the snapshot has no excluded files.
        if (!_inConflict.contains(copy.path) && !_context.Tree().Look(copy.copy)) {
            _context.Records().ForgetCopy(copy);
        }
    }
    transaction.Commit();
}

}  // namespace pull
}  // namespace ovsync
