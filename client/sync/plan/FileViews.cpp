#include "client/sync/plan/FileViews.h"

#include <algorithm>

#include "client/sync/pass/RemoteVersion.h"

namespace ovsync {
namespace plan {

using local::LocalEntry;
using local::LocalSnapshot;
using pass::FileComparison;
using pass::IsContentOf;
using pass::IsCopyOf;
using pass::LocalState;
using pass::PassReport;
using pass::PassSides;
using pass::RemoteState;
using pass::RemoteTree;
using pass::SyncOptions;
using store::ConflictCopy;

FileViews::FileViews(const PassSides& sides, const FileComparison& comparison, const RemoteTree& remote,
                     const LocalSnapshot& snapshot, PassReport& report, Direction direction)
    : _sides(sides),
      _comparison(comparison),
      _remote(remote),
      _snapshot(snapshot),
      _report(report),
      _direction(direction) {
    for (const ConflictCopy& copy : _sides.records.Copies()) {
        _copies.insert(copy.copy, copy.contentMd5);
        _copiesOf.insert(copy.path, copy);
    }
}

FileView FileViews::At(const QString& path) const {
    _report.ThrowIfStopped();
    FileView view;
    view.path = path;
    view.record = _sides.records.FindFile(path);
    view.here = _comparison.CompareHere(path, _snapshot, view.record);
    if (view.here.renewed) {
        view.record = view.here.renewed;
        view.renewed.append(*view.record);
    }
    FileSituation& situation = view.situation;
    situation.here = view.here.state;
    situation.hasRecord = view.record.has_value();
    view.knownMd5 = view.record ? view.record->contentMd5 : QString();
    const auto remote = _remote.AllFiles().constFind(path);
    if (remote != _remote.AllFiles().constEnd()) {
        view.remote = *remote;
        const pass::RemoteFileState there = _comparison.CompareThere(view.remote, view.record);
        if (there.failure) {
            _report.TellFailure(path, there.failure);
        }
        if (there.renewed) {
            view.renewed.append(*there.renewed);
        }
        situation.there = there.state;
        const bool isOther = there.state == RemoteState::New || there.state == RemoteState::Older;
        if (isOther && view.here.entry && view.here.entry->kind == LocalEntry::Kind::File) {
            _CompareContents(view);
        }
    } else if (_remote.HasFolder(path)) {
        situation.there = RemoteState::Folder;
    }
    view.step = _IsUntouchedCopy(view) ? SyncStep::Nothing : Decide(_direction, situation);
    return view;
}

QStringList FileViews::PathsHere() const {
    QStringList paths = _snapshot.entries.keys();
    for (const QString& path : _sides.scope.Files()) {
        if (!_snapshot.entries.contains(path) && !_sides.exclusion.HasFileAt(path)) {
            paths.append(path);
        }
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

void FileViews::_CompareContents(FileView& view) const {
    FileSituation& situation = view.situation;
    situation.isSameContent = _comparison.HasContentOf(view.path, view.remote, view.here) ||
                              (_direction == Direction::Push && _HasFetchedContentOf(view));
    _FindCopies(view);
    situation.winner = _direction == Direction::Both ? _WinnerOf(view) : Winner::Nobody;
}

bool FileViews::_HasFetchedContentOf(FileView& view) const {
    const bool canTell = view.remote.md5Checksum.isEmpty() && view.here.state != LocalState::Unchanged &&
                         IsContentOf(view.remote, view.here.entry->fingerprint.size, QString());
    if (!canTell) {
        return false;
    }
    _comparison.Read(view.path, view.here);
    return _IsContentThere(view, view.here.md5);
}

bool FileViews::_HasContentOf(FileView& view, const ConflictCopy& copy) const {
    if (!IsContentOf(view.remote, view.here.entry->fingerprint.size, QString())) {
        return false;
    }
    if (view.here.md5.isEmpty()) {
        _comparison.Read(view.path, view.here);
    }
    return view.here.md5 == copy.contentMd5;
}

bool FileViews::_IsContentThere(const FileView& view, const QString& md5) const {
    try {
        return !md5.isEmpty() && _comparison.IsContentThere(view.remote, md5);
    } catch (const std::exception&) {
        _report.TellFailure(view.path, std::current_exception());
        return false;
    }
}

void FileViews::_FindCopies(FileView& view) const {
    for (const ConflictCopy& copy : _copiesOf.values(view.path)) {
        const bool isOfVersion = IsCopyOf(view.remote, copy);
        if (isOfVersion) {
            view.situation.isBesideAlready = true;
            view.copy = copy.copy;
            view.situation.isSameContent = view.situation.isSameContent || _HasContentOf(view, copy);
        }
        // The disk is asked, because the snapshot has no excluded files.
        if (_direction == Direction::Pull || _sides.tree.Look(copy.copy)) {
            continue;
        }
        if (copy.identity.isEmpty() ? _IsContentThere(view, copy.contentMd5) : isOfVersion) {
            view.situation.isResolved = true;
            view.knownMd5 = copy.contentMd5;
        }
    }
}

Winner FileViews::_WinnerOf(const FileView& view) const {
    switch (_sides.options.conflicts) {
        case SyncOptions::Conflicts::Here:
            return Winner::Here;
        case SyncOptions::Conflicts::There:
            return Winner::There;
        case SyncOptions::Conflicts::Newer:
            break;
        case SyncOptions::Conflicts::KeepBoth:
            return Winner::Nobody;
    }
    const QDateTime& there = view.remote.lastModifiedDate;
    const qint64 nanosecondsInMillisecond = 1000000;
    const qint64 here = view.here.entry->fingerprint.modified / nanosecondsInMillisecond;
    if (!there.isValid()) {
        return Winner::Nobody;
    }
    return here > there.toMSecsSinceEpoch() ? Winner::Here : Winner::There;
}

bool FileViews::_IsUntouchedCopy(FileView& view) const {
    const bool isAlone = view.here.state == LocalState::Unknown && view.situation.there == RemoteState::Nothing;
    if (_direction == Direction::Pull || !isAlone || !_copies.contains(view.path)) {
        return false;
    }
    _comparison.Read(view.path, view.here);
    // Once somebody wrote into it, it is a file of this side.
    return view.here.md5 == _copies.value(view.path);
}

}  // namespace plan
}  // namespace ovsync
