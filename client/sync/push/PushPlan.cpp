#include "client/sync/push/PushPlan.h"

#include <algorithm>
#include <set>

#include "client/sync/local/PathNames.h"

namespace ovsync {
namespace push {

using local::BlockedText;
using local::ConflictText;
using local::FolderOf;
using local::LocalEntry;
using local::LocalSnapshot;
using pass::LocalState;
using pass::PassSides;
using pass::RecordMaker;
using pass::RemoteState;
using pass::RemoteTree;
using plan::Direction;
using plan::FileView;
using plan::FileViews;
using plan::SyncStep;
using report::SyncEvent;
using sync::config::FileConfiguration;

namespace {

constexpr std::chrono::milliseconds MoreThanASecond(1200);

/// Whether a folder is here where the service's file was, or something else where a folder of the service was.
bool IsInTheWay(const LocalSnapshot& snapshot, const QString& path) {
    for (QString at = path; !at.isEmpty(); at = FolderOf(at)) {
        const auto entry = snapshot.entries.find(at);
        if (entry != snapshot.entries.end()) {
            return at == path || entry->kind != LocalEntry::Kind::Folder;
        }
    }
    return false;
}

}  // namespace

QSet<QString> PushPlan::Work::Sent() const {
    QSet<QString> sent(folders.begin(), folders.end());
    for (const PushOrder& order : orders) {
        sent.insert(order.path);
    }
    return sent;
}

PushPlan::PushPlan(const PassSides& sides, const FileViews& views, const RecordMaker& maker, const RemoteTree& remote,
                   const LocalSnapshot& snapshot)
    : _sides(sides), _views(views), _maker(maker), _remote(remote), _snapshot(snapshot) {
    for (const QString& folder : _sides.scope.Folders()) {
        _knownFolders.insert(folder);
    }
}

PushPlan::Deletions PushPlan::FindGone() const {
    Deletions deletions;
    for (const QString& path : _sides.scope.Files()) {
        const bool isOnlyThere = _remote.HasFile(path) && !_snapshot.Has(path, LocalEntry::Kind::File);
        if (!isOnlyThere || _sides.exclusion.HasFileAt(path)) {
            continue;
        }
        const FileView view = _views.At(path);
        if (view.step == SyncStep::DeleteThere) {
            PushOrder order;
            order.path = path;
            order.isRemoval = true;
            order.isNew = false;
            order.remote = view.remote;
            order.knownMd5 = view.knownMd5;
            order.notBefore = _EndOfSecondOf(view.remote);
            order.looksBefore = !_remote.HasChecksums();
            (IsInTheWay(_snapshot, path) ? deletions.inTheWay : deletions.others).files.push_back(order);
        }
    }
    _FindGoneFolders(deletions);
    return deletions;
}

void PushPlan::_FindGoneFolders(Deletions& deletions) const {
    for (const QString& path : _sides.scope.Folders()) {
        if (_remote.HasFolder(path) && !_snapshot.HasFolder(path) && !_sides.exclusion.HasFolderAt(path)) {
            (IsInTheWay(_snapshot, path) ? deletions.inTheWay : deletions.others).folders.append(path);
        }
    }
}

PushPlan::Work PushPlan::Find() {
    const auto reading = _views.KeepReading();
    for (const QString& path : _views.PathsHere()) {
        if (!_remote.IsRefused(path)) {
            Take(_views.At(path));
        }
    }
    return Finish();
}

void PushPlan::Take(const FileView& view) {
    const QString& path = view.path;
    _work.records.files += view.renewed;
    switch (view.step) {
        case SyncStep::SendNew:
        case SyncStep::SendChanged:
        case SyncStep::SendOver:
            _Order(view);
            break;
        case SyncStep::Record:
            _work.records.files.append(_maker.Make(path, view.remote, view.here));
            break;
        case SyncStep::ForgetRecord:
            _work.records.forgottenFiles.append(path);
            break;
        case SyncStep::DeleteThere:
            // What is to be deleted was found before.
            if (view.here.state != LocalState::Nothing) {
                _Tell(SyncEvent::Kind::Refused, path,
                      BlockedText(*view.here.entry, view.situation.there == RemoteState::Folder));
                Block(path);
            } else if (!_sides.options.deletes) {
                _Tell(SyncEvent::Kind::DeletedHere, path);
            }
            break;
        case SyncStep::TellDeletedHere:
            _Tell(SyncEvent::Kind::DeletedHere, path);
            _work.open.append(path);
            break;
        case SyncStep::TellNewerThere:
            _Tell(SyncEvent::Kind::NewerThere, path);
            _work.open.append(path);
            break;
        case SyncStep::TellGone:
            _Tell(SyncEvent::Kind::Kept, path, QStringLiteral("it was deleted on the service, and is not sent again"));
            break;
        case SyncStep::TellConflict:
            _Tell(SyncEvent::Kind::Conflict, path,
                  view.copy.isEmpty()
                      ? QStringLiteral("it changed here and on the service, whose version a pull puts beside it")
                      : ConflictText(view.copy));
            break;
        case SyncStep::TellChangedAndGone:
            _Tell(SyncEvent::Kind::Conflict, path, QStringLiteral("it changed here, and was deleted on the service"));
            break;
        case SyncStep::Blocked:
            _Tell(SyncEvent::Kind::Refused, path,
                  BlockedText(*view.here.entry, view.situation.there == RemoteState::Folder));
            Block(path);
            break;
        default:
            break;
    }
}

void PushPlan::_Order(const FileView& view) {
    PushOrder order;
    order.path = view.path;
    order.isNew = !_remote.HasFile(view.path);
    order.remote = view.remote;
    order.knownMd5 = view.knownMd5;
    order.notBefore = _EndOfSecondOf(view.remote);
    order.looksBefore = !_remote.HasChecksums();
    order.size = view.here.entry->fingerprint.size;
    order.isExecutable = view.here.entry->IsExecutable();
    order.isExecutableThere =
        !order.isNew && _sides.service.attributesOf(view.remote.serverPath).isExecutable.value_or(false);
    // An empty folder may be one of the service itself.
    order.triesConditions = !_remote.AllFiles().isEmpty() && order.IsFitForTrial();
    _work.orders.push_back(order);
    NeedFoldersOf(view.path);
}

std::chrono::steady_clock::time_point PushPlan::_EndOfSecondOf(const FileConfiguration& remote) const {
    const bool isThatOfListing =
        _maker.IsInDoubt(remote) && remote.lastModifiedDate.toSecsSinceEpoch() == _maker.ListedAt().toSecsSinceEpoch();
    return isThatOfListing ? std::chrono::steady_clock::now() + MoreThanASecond
                           : std::chrono::steady_clock::time_point();
}

PushPlan::Work PushPlan::Finish() {
    _FindForgottenFolders();
    _FindFolders();
    const auto isBlocked = [this](const PushOrder& order) { return _blockedFolders.contains(FolderOf(order.path)); };
    std::deque<PushOrder>& orders = _work.orders;
    orders.erase(std::remove_if(orders.begin(), orders.end(), isBlocked), orders.end());
    return std::move(_work);
}

void PushPlan::_FindForgottenFolders() {
    for (const QString& path : _knownFolders) {
        if (_snapshot.entries.contains(path) || _sides.exclusion.HasFolderAt(path) || _remote.IsRefused(path)) {
            continue;
        }
        if (!_remote.HasFolder(path)) {
            _work.records.forgottenFolders.append(path);
        } else if (!_sides.options.deletes && _views.Way() == Direction::Push) {
            _Tell(SyncEvent::Kind::DeletedHere, path);
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
            NeedFoldersOf(path);
        }
    }
    for (const QString& path : missing) {
        if (_blockedFolders.contains(path) || _blockedFolders.contains(FolderOf(path)) || _remote.IsRefused(path)) {
            _blockedFolders.insert(path);
        } else if (_neededFolders.contains(path)) {
            _work.folders.append(path);
        } else if (_views.Way() == Direction::Push) {
            _Tell(SyncEvent::Kind::Kept, path, QStringLiteral("it was deleted on the service, and is not made again"));
        }
    }
}

void PushPlan::NeedFoldersOf(const QString& path) {
    for (QString folder = FolderOf(path); !folder.isEmpty(); folder = FolderOf(folder)) {
        _neededFolders.insert(folder);
    }
}

void PushPlan::_Tell(SyncEvent::Kind kind, const QString& path, const QString& detail) {
    _work.events.append({kind, path, detail});
}

}  // namespace push
}  // namespace ovsync
