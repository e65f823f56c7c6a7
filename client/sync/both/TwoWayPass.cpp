#include "client/sync/both/TwoWayPass.h"

#include <algorithm>
#include <utility>

#include "client/sync/both/ChangedHere.h"
#include "client/sync/both/Moves.h"
#include "client/sync/both/TwoWayPlan.h"
#include "client/sync/local/PathNames.h"
#include "client/sync/pull/Downloader.h"
#include "client/sync/pull/LocalDeletions.h"
#include "client/sync/push/RemoteDeletions.h"
#include "client/sync/push/Uploader.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace both {

using changes::ServiceChanges;
using local::FolderOf;
using local::LocalEntry;
using local::LocalSnapshot;
using pass::FileComparison;
using pass::RecordMaker;
using pass::RemoteTree;
using pass::SyncPass;
using plan::Direction;
using plan::FileViews;
using pull::Downloader;
using pull::LocalChanges;
using pull::LocalDeletions;
using pull::PullOrder;
using pull::PullPlan;
using push::PushOrder;
using push::PushPlan;
using push::RemoteDeletions;
using push::Uploader;
using report::SyncEvent;
using report::SyncOutcome;

namespace {

/// When more is open, listing everything is no more work.
const int MostOpen = 200;

template <typename Order, typename Predicate>
void RemoveIf(std::deque<Order>& orders, Predicate predicate) {
    orders.erase(std::remove_if(orders.begin(), orders.end(), predicate), orders.end());
}

void LeaveOut(QStringList& folders, const QSet<QString>& needed) {
    const auto isNeeded = [&needed](const QString& path) { return needed.contains(path); };
    folders.erase(std::remove_if(folders.begin(), folders.end(), isNeeded), folders.end());
}

}  // namespace

SyncOutcome TwoWayPass::Run() {
    return _pass.Run([this] { _Sync(); });
}

void TwoWayPass::_Sync() {
    _pass.Prepare();
    _state = LastState::Of(_sides.records, _sides.exclusion.Text());
    const bool asks = _sides.service.changes && !_state.there.isEmpty();
    const bool looksWhole = !asks || !_changedHere || _state.needsLook;
    if (asks) {
        _sides.service.changes->Ask(_state.there);
    }
    std::optional<LocalSnapshot> snapshot;
    if (looksWhole) {
        snapshot = _pass.Look();
    }
    bool asksForState = _sides.service.changes && !_state.isUnable;
    if (asks) {
        const ServiceChanges changed = _sides.service.changes->Take();
        _report.ThrowIfStopped();
        if (changed.answer == ServiceChanges::Answer::Known && _SyncPart(snapshot, changed)) {
            return;
        }
        _state = LastState();
        _state.isUnable = changed.answer == ServiceChanges::Answer::NotAble;
        asksForState = !_state.isUnable;
    }
    _SyncWhole(snapshot ? *std::move(snapshot) : _pass.Look(), asksForState);
}

void TwoWayPass::_SyncWhole(LocalSnapshot snapshot, bool asksForState) {
    _report.Tell(snapshot.refused);
    _state.excluded = _sides.exclusion.Text();
    if (asksForState) {
        // Before the listing, so that no change falls in between.
        const std::optional<QString> there = _sides.service.changes->StateNow();
        _state.there = there.value_or(QString());
        _state.isUnable = there && there->isEmpty();
    }
    if (asksForState || !_state.listed.isValid()) {
        _state.listed = QDateTime::currentDateTimeUtc();
    }
    const bool isUnchanged = _pass.WasInStep() && _state.there.isEmpty() &&
                             ChangedHere(_sides.records, _sides.exclusion, snapshot).isEmpty();
    SyncPass::Listing listing = isUnchanged ? _pass.ListChanges(snapshot, true) : _pass.ListOrMake(snapshot);
    if (!listing.tree) {
        for (const QString& path : snapshot.Others()) {
            _report.Tell(SyncEvent::Kind::Skipped, path, QStringLiteral("it is neither a file nor a folder"));
        }
        _state.Record(_sides.records);
        return;
    }
    if (!_state.there.isEmpty()) {
        _state.there = _sides.service.changes->Listed(_state.there);
    }
    _Join(snapshot, listing);
    _pass.EndListing(listing);
    _Record(snapshot, *listing.tree);
}

bool TwoWayPass::_SyncPart(std::optional<LocalSnapshot>& snapshot, const ServiceChanges& changed) {
    ServicePart there(_sides);
    if (!there.Add(changed) || !_LookAtOpen(there)) {
        return false;
    }
    QSet<QString> whole(_state.open.begin(), _state.open.end());
    if (!snapshot) {
        whole += *_changedHere;
    }
    QSet<QString> paths = whole + there.Paths();
    for (const QString& path : whole) {
        for (const QString& below : _sides.records.PathsBelow(path)) {
            paths.insert(below);
        }
    }
    if (snapshot) {
        paths += ChangedHere(_sides.records, _sides.exclusion, *snapshot);
        for (const QString& path : snapshot->Others()) {
            paths.insert(path);
        }
    }
    _state.there = changed.state;
    _pass.Scope().Narrow(paths);
    const QSet<QString>& places = _pass.Scope().Paths();
    LocalSnapshot part;
    if (snapshot) {
        part = snapshot->Of(places);
    } else {
        part = LocalSnapshot::OfPlaces(_sides.tree, _sides.exclusion, places, whole);
        _report.Tell(part.closed);
    }
    _report.Tell(part.refused);
    if (paths.isEmpty()) {
        _Record(part, RemoteTree(_sides.service, {}, {}, _sides.exclusion));
        return true;
    }
    SyncPass::Listing listing;
    listing.at = changed.at;
    listing.tree.emplace(_pass.TreeOf(there.Folders(), there.Files(), part));
    // Where it has files, these tell.
    if (_state.hasChecksums && listing.tree->AllFiles().isEmpty()) {
        listing.tree->ExpectChecksums();
    }
    _Join(part, listing);
    _Record(part, *listing.tree);
    return true;
}

bool TwoWayPass::_LookAtOpen(ServicePart& there) {
    QStringList serverPaths;
    for (const QString& path : _state.open) {
        if (_HasPlaceThere(path) && !there.Tells(path)) {
            serverPaths.append(_sides.service.ServerPath(path));
        }
    }
    try {
        return serverPaths.isEmpty() || there.AddLookedAt(_sides.service.changes->LookAt(serverPaths));
    } catch (const sync::http::HttpException&) {
        return false;
    }
}

void TwoWayPass::_Join(LocalSnapshot& snapshot, SyncPass::Listing& listing) {
    RemoteTree& remote = *listing.tree;
    _report.Tell(remote.LeaveOutLinks(snapshot));
    const RecordMaker maker(_sides.service, listing.at);
    const FileComparison comparison(_sides, maker);
    LocalChanges changes(_sides, _pass.Installing(), _report, snapshot);
    Moves moves(_sides, comparison, maker, snapshot, remote, _pass.Scope(), changes, _report);
    moves.CarryOut();
    const FileViews views(_sides, comparison, remote, snapshot, _report, Direction::Both);
    PullPlan here(_sides, views, maker, remote, snapshot);
    PushPlan there(_sides, views, maker, remote, snapshot);
    LocalDeletions deletionsHere(_sides, remote, changes, _report);
    RemoteDeletions deletionsThere(_sides, comparison, maker, snapshot, remote, _report);

    PullPlan::Deletions goneThere = here.FindGone();
    _sides.records.Write(goneThere.records);
    PushPlan::Deletions goneHere = there.FindGone();
    if (!deletionsHere.MayDelete(goneThere.inTheWay.files.size() + goneThere.others.files.size())) {
        goneThere = PullPlan::Deletions();
    }
    const size_t fromService = goneHere.inTheWay.files.size() + goneHere.others.files.size();
    if (!deletionsThere.MayDelete(static_cast<int>(fromService))) {
        goneHere = PushPlan::Deletions();
    }
    deletionsThere.ClearUp();
    deletionsHere.Delete(std::move(goneThere.inTheWay));
    deletionsThere.Delete(goneHere.inTheWay);

    TwoWayPlan::Work work = TwoWayPlan(views, remote, here, there).Find();
    for (const store::RecordChanges& records : {work.fetches.records, work.folders.records, work.sends.records}) {
        _sides.records.Write(records);
    }
    for (const QVector<SyncEvent>& events : {work.fetches.events, work.folders.events, work.sends.events}) {
        _report.Tell(events);
    }

    changes.MakeFolders(work.folders.missing);
    RemoveIf(work.fetches.orders, [&](const PullOrder& order) { return !snapshot.HasFolder(FolderOf(order.path)); });
    Downloader downloader(_sides, _pass.Installing(), comparison, maker, _report);
    const bool hasFetched = downloader.Run(std::move(work.fetches.orders));

    RemoveIf(work.sends.orders, [&](const PushOrder& order) {
        return work.sentOver.contains(order.path) && !downloader.InTrash().contains(order.path);
    });
    for (const PushOrder& order : work.sends.orders) {
        _sent.insert(order.path);
    }
    for (const QString& folder : work.sends.folders) {
        _sent.insert(folder);
    }
    const bool hasSent = Uploader(_sides, comparison, maker, _report).Run(work.sends.folders, work.sends.orders);

    // What came or went under another name, or elsewhere, has to be on both sides before it goes.
    LeaveOut(goneThere.others.folders, work.needed);
    LeaveOut(goneHere.others.folders, work.needed);
    if (hasFetched && hasSent) {
        deletionsHere.Delete(std::move(goneThere.others));
        deletionsThere.Delete(goneHere.others);
    } else {
        deletionsHere.Keep(goneThere.others, QStringLiteral(", because not everything could be transferred"));
        deletionsThere.Keep(goneHere.others);
    }
    _sides.records.Write(here.FindEndedConflicts());
    moves.RememberFolders();
}

void TwoWayPass::_Record(const LocalSnapshot& snapshot, const RemoteTree& remote) {
    _state.hasChecksums = _state.hasChecksums || remote.HasChecksums();
    _state.open = _report.Open().values();
    std::sort(_state.open.begin(), _state.open.end());
    _state.needsLook = std::any_of(snapshot.refused.begin(), snapshot.refused.end(), [](const SyncEvent& refused) {
        return refused.path.contains(QChar(QChar::ReplacementCharacter));
    });
    QSet<QString> ofHere;
    for (const SyncEvent& refused : snapshot.refused) {
        ofHere.insert(refused.path);
    }
    const bool isAnyLost = std::any_of(_state.open.begin(), _state.open.end(), [&](const QString& path) {
        return !_HasPlaceThere(path) && !ofHere.contains(path);
    });
    if (isAnyLost || _state.open.size() > MostOpen || !_IsAllSeen(remote) || !_IsAllRecorded(snapshot, remote)) {
        _state.there.clear();
        _state.open.clear();
    }
    _state.Record(_sides.records);
}

bool TwoWayPass::_HasPlaceThere(const QString& path) const {
    return local::ReasonAgainstPath(path).isEmpty() && !_sides.service.UrlAt(path).isEmpty();
}

bool TwoWayPass::_IsAllSeen(const RemoteTree& remote) const {
    const QSet<QString>& refused = remote.RefusedPaths();
    return remote.Refused().isEmpty() && !remote.HasLeftOut() &&
           std::none_of(refused.begin(), refused.end(), [this](const QString& path) {
               return _sides.records.HasFile(path) || _sides.records.FindFolder(path) ||
                      !_sides.records.PathsBelow(path).isEmpty();
           });
}

bool TwoWayPass::_IsAllRecorded(const LocalSnapshot& snapshot, const RemoteTree& remote) const {
    const QSet<QString>& open = _report.Open();
    const QStringList files = _sides.scope.Files();
    const QStringList folders = _sides.scope.Folders();
    const QSet<QString> recordedFiles(files.begin(), files.end());
    const QSet<QString> recordedFolders(folders.begin(), folders.end());
    for (auto file = remote.AllFiles().begin(); file != remote.AllFiles().end(); ++file) {
        if (!recordedFiles.contains(file.key()) && !open.contains(file.key())) {
            return false;
        }
    }
    QSet<QString> recordedHere = recordedFiles + recordedFolders + open;
    for (const store::ConflictCopy& copy : _sides.records.Copies()) {
        recordedHere.insert(copy.copy);
    }
    for (auto entry = snapshot.entries.begin(); entry != snapshot.entries.end(); ++entry) {
        if (entry->kind != LocalEntry::Kind::Other && !recordedHere.contains(entry.key())) {
            return false;
        }
    }
    // An open folder says nothing of what is in it.
    return std::all_of(remote.AllFolders().begin(), remote.AllFolders().end(),
                       [&](const QString& path) { return recordedFolders.contains(path); }) &&
           std::all_of(files.begin(), files.end(),
                       [&](const QString& path) {
                           return remote.HasFile(path) || _sent.contains(path) || open.contains(path);
                       }) &&
           std::all_of(folders.begin(), folders.end(), [&](const QString& path) {
               return remote.HasFolder(path) || _sent.contains(path) || open.contains(path);
           });
}

}  // namespace both
}  // namespace ovsync
