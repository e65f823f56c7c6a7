#include "client/sync/part/ScopedPass.h"

#include <algorithm>
#include <utility>

#include "client/sync/local/PathNames.h"
#include "client/sync/part/ChangedHere.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace part {

using changes::ServiceChanges;
using local::LocalEntry;
using local::LocalSnapshot;
using pass::RemoteTree;
using pass::SyncPass;
using plan::Direction;
using report::SyncEvent;
using report::SyncOutcome;

namespace {

/// When more is open, listing everything is no more work.
const int MostOpen = 200;

}  // namespace

ScopedPass::ScopedPass(SyncPass& pass, Direction direction, Join join, const std::optional<QSet<QString>>& changedHere)
    : _pass(pass),
      _sides(pass.Sides()),
      _report(pass.Report()),
      _direction(direction),
      _join(std::move(join)),
      _changedHere(changedHere),
      _state(direction) {}

SyncOutcome ScopedPass::Run() {
    return _pass.Run([this] { _Run(); });
}

void ScopedPass::_Run() {
    _pass.CheckFolder();
    _state = LastState::Of(_sides.records, _direction, _sides.exclusion.Text());
    const bool asks = _sides.service.changes && !_state.there.isEmpty();
    const bool looksWhole = !asks || !_changedHere || _state.needsLook;
    if (asks) {
        _sides.service.changes->Ask(_state.there);
    }
    // The service need not wait for what only this side has to do.
    _pass.Prepare();
    std::optional<LocalSnapshot> snapshot;
    if (looksWhole) {
        snapshot = _pass.Look();
    }
    bool asksForState = _sides.service.changes && !_state.isUnable;
    if (asks) {
        const ServiceChanges changed = _sides.service.changes->Take();
        _report.ThrowIfStopped();
        if (changed.answer == ServiceChanges::Answer::Known && _RunPart(snapshot, changed)) {
            return;
        }
        _state = LastState(_direction);
        _state.isUnable = changed.answer == ServiceChanges::Answer::NotAble;
        asksForState = !_state.isUnable;
    }
    _RunWhole(snapshot ? *std::move(snapshot) : _pass.Look(), asksForState);
}

void ScopedPass::_RunWhole(LocalSnapshot snapshot, bool asksForState) {
    _TellOfHere(snapshot.refused);
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
    SyncPass::Listing listing = _List(snapshot);
    if (!listing.tree) {
        const QStringList others = _direction == Direction::Pull ? QStringList() : snapshot.Others();
        for (const QString& path : others) {
            _report.Tell(SyncEvent::Kind::Skipped, path, local::SkippedText(snapshot.entries.value(path)));
        }
        _state.Record(_sides.records);
        return;
    }
    if (!_state.there.isEmpty()) {
        _state.there = _sides.service.changes->Listed(_state.there);
    }
    const QSet<QString> sent = _join(snapshot, listing);
    if (_direction != Direction::Push) {
        _pass.EndListing(listing);
    }
    _Record(snapshot, *listing.tree, sent);
}

SyncPass::Listing ScopedPass::_List(const LocalSnapshot& snapshot) {
    const bool mayBeNothing = _direction != Direction::Push && _pass.WasInStep() && _state.there.isEmpty();
    if (mayBeNothing && !_HasWorkHere(snapshot)) {
        return _pass.ListChanges(snapshot);
    }
    return _direction == Direction::Pull ? _pass.List(QDateTime(), snapshot) : _pass.ListOrMake(snapshot);
}

bool ScopedPass::_HasWorkHere(const LocalSnapshot& snapshot) {
    const QSet<QString> changed = ChangedHere(_sides.records, _sides.exclusion, snapshot);
    if (_direction != Direction::Pull) {
        return !changed.isEmpty();
    }
    return std::any_of(changed.begin(), changed.end(), [&](const QString& path) {
        return _sides.records.HasFile(path) ? !snapshot.Has(path, LocalEntry::Kind::File)
                                            : _sides.records.FindFolder(path) && !snapshot.HasFolder(path);
    });
}

bool ScopedPass::_RunPart(std::optional<LocalSnapshot>& snapshot, const ServiceChanges& changed) {
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
    _TellOfHere(part.refused);
    if (paths.isEmpty()) {
        _Record(part, RemoteTree(_sides.service, {}, {}, _sides.exclusion), {});
        return true;
    }
    SyncPass::Listing listing;
    listing.at = changed.at;
    listing.tree.emplace(_pass.TreeOf(there.Folders(), there.Files(), part));
    // Where it has files, these tell.
    if (_state.hasChecksums && listing.tree->AllFiles().isEmpty()) {
        listing.tree->ExpectChecksums();
    }
    const QSet<QString> sent = _join(part, listing);
    _Record(part, *listing.tree, sent);
    return true;
}

bool ScopedPass::_LookAtOpen(ServicePart& there) {
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

void ScopedPass::_TellOfHere(const QVector<SyncEvent>& refused) {
    // Nothing from here goes anywhere by a pull.
    if (_direction != Direction::Pull) {
        _report.Tell(refused);
    }
}

void ScopedPass::_Record(const LocalSnapshot& snapshot, const RemoteTree& remote, const QSet<QString>& sent) {
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
    if (isAnyLost || _report.IsAllOpen() || _state.open.size() > MostOpen || !_IsAllSeen(remote) ||
        !_IsAllRecorded(snapshot, remote, sent)) {
        _state.there.clear();
        _state.open.clear();
    }
    _state.Record(_sides.records);
}

bool ScopedPass::_HasPlaceThere(const QString& path) const {
    return local::ReasonAgainstPath(path).isEmpty() && !_sides.service.UrlAt(path).isEmpty();
}

bool ScopedPass::_IsAllSeen(const RemoteTree& remote) const {
    const QSet<QString>& refused = remote.RefusedPaths();
    return remote.Refused().isEmpty() && !remote.HasLeftOut() &&
           std::none_of(refused.begin(), refused.end(), [this](const QString& path) {
               return _sides.records.HasFile(path) || _sides.records.FindFolder(path) ||
                      !_sides.records.PathsBelow(path).isEmpty();
           });
}

bool ScopedPass::_IsAllRecorded(const LocalSnapshot& snapshot, const RemoteTree& remote,
                                const QSet<QString>& sent) const {
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
    // What a pull leaves alone here, the next one finds here.
    const bool leavesAlone = _direction == Direction::Pull;
    for (auto entry = snapshot.entries.begin(); !leavesAlone && entry != snapshot.entries.end(); ++entry) {
        if (entry->kind != LocalEntry::Kind::Other && !recordedHere.contains(entry.key())) {
            return false;
        }
    }
    // An open folder says nothing of what is in it.
    return std::all_of(remote.AllFolders().begin(), remote.AllFolders().end(),
                       [&](const QString& path) { return recordedFolders.contains(path); }) &&
           std::all_of(files.begin(), files.end(),
                       [&](const QString& path) {
                           return remote.HasFile(path) || sent.contains(path) || open.contains(path) ||
                                  _sides.exclusion.HasFileAt(path);
                       }) &&
           std::all_of(folders.begin(), folders.end(), [&](const QString& path) {
               return remote.HasFolder(path) || sent.contains(path) || open.contains(path) ||
                      _sides.exclusion.HasFolderAt(path);
           });
}

}  // namespace part
}  // namespace ovsync
