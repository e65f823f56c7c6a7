#include "client/sync/pull/PullPlan.h"

#include <utility>

#include "client/sync/local/LocalContent.h"
#include "client/sync/local/LocalError.h"
#include "client/sync/local/PathNames.h"
#include "client/sync/pass/RemoteVersion.h"

namespace ovsync {
namespace pull {

using local::ConflictText;
using local::FolderOf;
using local::LocalContent;
using local::TemporaryBeside;
using pass::IsCopyOf;
using pass::LocalState;
using pass::RemoteState;
using pass::RemoteTree;
using plan::Direction;
using plan::FileView;
using plan::SyncStep;
using report::SyncEvent;
using store::ConflictCopy;
using store::RecordChanges;

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

store::Placement RemovalOf(const QString& path, const store::Fingerprint& fingerprint) {
    store::Placement removal;
    removal.record.path = path;
    removal.temporary = TemporaryBeside(path);
    removal.isRemoval = true;
    removal.old = fingerprint;
    return removal;
}

}  // namespace

PullPlan::Deletions PullPlan::FindGone() const {
    Deletions deletions;
    for (const QString& path : _sides.scope.Files()) {
        if (!_remote.HasFile(path) && !_remote.IsRefused(path) && !_sides.exclusion.HasFileAt(path)) {
            _FindGoneFile(path, deletions);
        }
    }
    for (const QString& path : _sides.scope.Folders()) {
        if (_remote.HasFolder(path) || _remote.IsRefused(path) || _sides.exclusion.HasFolderAt(path)) {
            continue;
        }
        if (_snapshot.HasFolder(path)) {
            (IsInTheWay(_remote, path) ? deletions.inTheWay : deletions.others).folders.append(path);
        } else {
            deletions.records.forgottenFolders.append(path);
        }
    }
    return deletions;
}

void PullPlan::_FindGoneFile(const QString& path, Deletions& deletions) const {
    const FileView view = _views.At(path);
    deletions.records.files += view.renewed;
    switch (view.step) {
        case SyncStep::DeleteHere:
            (IsInTheWay(_remote, path) ? deletions.inTheWay : deletions.others)
                .files.append(RemovalOf(path, view.here.entry->fingerprint));
            break;
        case SyncStep::KeepChanged:
            deletions.events.append(
                {SyncEvent::Kind::Kept, path, QStringLiteral("it was deleted on the service, but has changed here")});
            break;
        case SyncStep::ForgetRecord:
            deletions.records.forgottenFiles.append(path);
            break;
        default:
            break;
    }
}

PullPlan::Folders PullPlan::FindFolders(const QSet<QString>& needed) const {
    Folders folders;
    QSet<QString> deleted;
    if (_views.Way() == Direction::Both) {
        const QStringList known = _sides.scope.Folders();
        deleted = QSet<QString>(known.begin(), known.end()) - needed;
    }
    QSet<QString> missing;
    for (const QString& path : _remote.AllFolders()) {
        const auto here = _snapshot.entries.find(path);
        if (_snapshot.HasFolder(path)) {
            folders.records.folders.append(path);
        } else if (here != _snapshot.entries.end()) {
            folders.events.append({SyncEvent::Kind::Refused, path, local::BlockedText(*here, true)});
        } else if (!deleted.contains(path) &&
                   (_snapshot.HasFolder(FolderOf(path)) || missing.contains(FolderOf(path)))) {
            missing.insert(path);
            folders.missing.append(path);
        }
    }
    return folders;
}

PullPlan::Fetches PullPlan::FindFetches() {
    Fetches fetches;
    const auto reading = _views.KeepReading();
    for (const QString& path : _remote.AllFiles().keys()) {
        if (_snapshot.HasFolder(FolderOf(path))) {
            Take(_views.At(path), fetches);
        }
    }
    return fetches;
}

void PullPlan::Take(const FileView& view, Fetches& fetches) {
    fetches.records.files += view.renewed;
    PullOrder order;
    order.path = view.path;
    order.remote = view.remote;
    order.attributes = _sides.service.attributesOf(view.remote.serverPath);
    order.here = view.here.entry;
    order.md5Here = view.here.md5;
    switch (view.step) {
        case SyncStep::Fetch:
            fetches.orders.push_back(std::move(order));
            break;
        case SyncStep::Replace:
            order.target = PullOrder::Target::Replace;
            order.hasLost = view.here.state != LocalState::Unchanged;
            fetches.orders.push_back(std::move(order));
            break;
        case SyncStep::FetchBeside:
            order.target = PullOrder::Target::Beside;
            if (_sides.options.isDryRun) {
                _besideInTrial.insert(view.path);
            }
            fetches.orders.push_back(std::move(order));
            break;
        case SyncStep::SendOver:
            order.target = PullOrder::Target::Trash;
            fetches.orders.push_back(std::move(order));
            break;
        case SyncStep::StillBeside:
            fetches.events.append({SyncEvent::Kind::Conflict, view.path, ConflictText(view.copy)});
            break;
        case SyncStep::Record:
            fetches.records.files.append(_maker.Make(view.path, view.remote, view.here));
            break;
        case SyncStep::Blocked:
            // Folders tell of themselves.
            if (view.situation.there == RemoteState::Folder) {
                break;
            }
            fetches.events.append({SyncEvent::Kind::Refused, view.path, local::BlockedText(*view.here.entry, false)});
            break;
        default:
            break;
    }
}

bool PullPlan::_IsOver(const ConflictCopy& copy, const QSet<QString>& open) const {
    const QSet<QString>& paths = _sides.scope.Paths();
    const bool isLookedAt = _sides.scope.IsWhole() || paths.contains(copy.path) || paths.contains(copy.copy);
    return isLookedAt && !open.contains(copy.path) && !_remote.IsRefused(copy.path) &&
           !_sides.exclusion.HasFileAt(copy.path);
}

bool PullPlan::_IsOfVersionThere(const ConflictCopy& copy) const {
    const auto remote = _remote.AllFiles().constFind(copy.path);
    return remote != _remote.AllFiles().constEnd() && IsCopyOf(*remote, copy);
}

bool PullPlan::_IsFileHere(const ConflictCopy& copy) const {
    // The disk is asked, because the snapshot has no excluded files.
    const std::optional<local::LocalEntry> here = _sides.tree.Look(copy.copy);
    return here && here->kind == local::LocalEntry::Kind::File;
}

QList<ConflictCopy> PullPlan::_NeedlessCopies(const QSet<QString>& open) const {
    const QList<ConflictCopy> all = _sides.records.Copies();
    QSet<QString> upToDate = _besideInTrial;
    for (const ConflictCopy& copy : all) {
        if (_IsOfVersionThere(copy) && _IsFileHere(copy)) {
            upToDate.insert(copy.path);
        }
    }
    QList<ConflictCopy> needless;
    for (const ConflictCopy& copy : all) {
        if (_IsOver(copy, open) || (upToDate.contains(copy.path) && !_IsOfVersionThere(copy))) {
            needless.append(copy);
        }
    }
    return needless;
}

PullPlan::Gone PullPlan::FindNeedlessCopies(const QSet<QString>& open) const {
    Gone needless;
    for (const ConflictCopy& copy : _NeedlessCopies(open)) {
        if (_sides.records.HasFile(copy.copy) || !_IsFileHere(copy)) {
            continue;
        }
        try {
            const std::optional<LocalContent> content =
                LocalContent::Of(_sides.tree, copy.copy, *_sides.options.isStopped);
            if (content && content->md5 == copy.contentMd5) {
                needless.files.append(RemovalOf(copy.copy, content->fingerprint));
            }
        } catch (const local::LocalError&) {
            // Nobody knows whether somebody wrote into it.
        }
    }
    return needless;
}

RecordChanges PullPlan::FindEndedConflicts(const QSet<QString>& open) const {
    RecordChanges changes;
    for (const ConflictCopy& copy : _NeedlessCopies(open)) {
        if (_sides.records.HasFile(copy.copy) || !_IsFileHere(copy)) {
            changes.forgottenCopies.append(copy);
        }
    }
    return changes;
}

}  // namespace pull
}  // namespace ovsync
