#include "client/sync/push/RemoteDeletions.h"

#include <algorithm>

#include "client/sync/local/PathNames.h"
#include "client/sync/pass/PassCommand.h"
#include "client/sync/push/Uploader.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace push {

using local::LocalEntry;
using pass::PassCommand;
using report::SyncEvent;
using sync::config::FolderConfiguration;

namespace {

QString FolderSetting() {
    return QStringLiteral("folder");
}

}  // namespace

bool RemoteDeletions::MayDelete(int deletions) {
    const QString known = _sides.records.Setting(FolderSetting());
    const QString now = _sides.tree.Identity();
    const bool isReplaced = !known.isEmpty() && known != now;
    const int files = deletions == 0 ? 0 : _sides.records.FileCount();
    const bool isAllowed = deletions == 0 || _sides.options.deletionLimit.Allows(deletions, files, _IsAnyHere());
    if (isAllowed && (deletions == 0 || !isReplaced || _sides.options.deletionLimit.IsRead())) {
        if (known != now) {
            _sides.records.WriteSetting(FolderSetting(), now);
        }
        return true;
    }
    const QString reason = isReplaced ? QStringLiteral(
                                            "this is another folder, or another disk, than that of the pass "
                                            "before, and it lacks %1 of %2 files")
                                      : QStringLiteral(
                                            "%1 of %2 files are gone here, which is too many to be deleted "
                                            "on the service without a word");
    _limit = reason.arg(deletions).arg(files);
    _refusedDeletions = deletions;
    return false;
}

void RemoteDeletions::TellOfLimit(bool isAllTransferred) {
    if (_limit.isEmpty()) {
        return;
    }
    const char* const command = _sides.options.deletes ? "push --delete --max-delete %1" : "sync --max-delete %1";
    const QString wayOut =
        isAllTransferred
            ? QStringLiteral("Look whether they should go, and run \"%1\" then, or bring them back by \"%2\"")
                  .arg(PassCommand(QString::fromLatin1(command).arg(_refusedDeletions), _sides.service, _sides.options),
                       PassCommand(QStringLiteral("pull"), _sides.service, _sides.options))
            : pass::TransfersFirst();
    _report.Tell(SyncEvent::Kind::Kept, QStringLiteral("."),
                 _limit + QStringLiteral("; nothing is deleted there. ") + wayOut);
}

bool RemoteDeletions::_IsAnyHere() const {
    return _sides.scope.LeavesFilesOut() ||
           std::any_of(_snapshot.entries.begin(), _snapshot.entries.end(),
                       [](const LocalEntry& entry) { return entry.kind == LocalEntry::Kind::File; });
}

void RemoteDeletions::Delete(const PushPlan::Gone& gone) {
    _DeleteFiles(gone.files);
    std::for_each(gone.folders.crbegin(), gone.folders.crend(), [this](const QString& path) {
        _report.ThrowIfStopped();
        _DeleteFolder(path);
    });
}

void RemoteDeletions::PutOff(const PushPlan::Gone& gone) {
    for (const PushOrder& file : gone.files) {
        _report.Tell(SyncEvent::Kind::Waiting, file.path,
                     QStringLiteral("it was deleted here, and stays on the service until everything else is "
                                    "transferred"));
    }
    for (const QString& folder : gone.folders) {
        _report.LeaveOpen(folder);
    }
}

void RemoteDeletions::_DeleteFiles(const std::deque<PushOrder>& files) {
    Uploader(_sides, _comparison, _maker, _report).Run({}, files);
    for (const PushOrder& file : files) {
        if (!_sides.records.FindFile(file.path)) {
            _Forget(file.path);
        }
    }
}

void RemoteDeletions::_DeleteFolder(const QString& path) {
    const std::optional<LocalEntry> here = _sides.tree.Look(path);
    if (here && here->kind == LocalEntry::Kind::Folder) {
        return;
    }
    try {
        if (_sides.options.isDryRun ? _WouldBeEmpty(path) : _IsDeletedThere(path)) {
            _report.TellSuccess();
            _Forget(path);
            _report.Tell(SyncEvent::Kind::DeletedThere, path);
        } else {
            _report.Tell(SyncEvent::Kind::Kept, path,
                         QStringLiteral("it was deleted here, but on the service something is in it that is not"));
        }
        // One that still holds something is the service's own from now on.
        _sides.records.ForgetFolder(path);
    } catch (const std::exception&) {
        _report.TellFailure(path, std::current_exception());
    }
}

bool RemoteDeletions::_IsDeletedThere(const QString& path) {
    FolderConfiguration folder;
    if (!_sides.service.folders->GetFolderProperties(_sides.service.FolderAt(path), folder)) {
        return true;
    }
    bool isEmpty = _IsEmpty(path);
    if (isEmpty) {
        // Whatever a request to delete a folder meets in it goes, too; so nobody may find it any more.
        const QString aside = _MovedAside(path);
        isEmpty = _IsEmpty(aside);
        if (!isEmpty) {
            _sides.service.folders->MoveFolder(_sides.service.FolderAt(aside), _sides.service.FolderAt(path));
        } else {
            _DeleteEmpty(aside);
        }
    }
    return isEmpty;
}

bool RemoteDeletions::_WouldBeEmpty(const QString& path) const {
    FolderConfiguration folder = _sides.service.FolderAt(path);
    std::shared_ptr<QVector<FolderConfiguration>> folders;
    std::shared_ptr<QVector<sync::config::FileConfiguration>> files;
    if (_sides.service.folders->GetAllFilesAndSubFoldersByFolder(folder, folders, files) != 0) {
        return true;
    }
    bool hasAny = false;
    const auto stays = [&](const auto& entry) {
        const QString below = _sides.service.PathBelow(entry.serverPath);
        const bool isIn = below.startsWith(path + QLatin1Char('/'));
        hasAny = hasAny || isIn;
        return isIn && !_forgotten.contains(below) && !_remote.WasMoved(below);
    };
    return std::none_of(files->begin(), files->end(), stays) && std::none_of(folders->begin(), folders->end(), stays) &&
           (hasAny || _IsEmpty(path));
}

void RemoteDeletions::_Forget(const QString& path) {
    _remote.Forget(path);
    _forgotten.insert(path);
}

void RemoteDeletions::_DeleteEmpty(const QString& path) const {
    FolderConfiguration folder;
    const auto isThere = [&] {
        return _sides.service.folders->GetFolderProperties(_sides.service.FolderAt(path), folder);
    };
    if (!isThere()) {
        return;
    }
    try {
        _sides.service.folders->DeleteFolder(folder);
    } catch (const sync::http::HttpException&) {
        // While others are at work beside it, Apache at times refuses what it does a moment later.
        if (isThere() && _IsEmpty(path)) {
            _sides.service.folders->DeleteFolder(folder);
        }
    }
}

QString RemoteDeletions::_MovedAside(const QString& path) const {
    QString aside = local::TemporaryBeside(path);
    try {
        _sides.service.folders->MoveFolder(_sides.service.FolderAt(path), _sides.service.FolderAt(aside));
    } catch (const sync::http::HttpException&) {
        // Some servers move no folders.
        return path;
    }
    return aside;
}

void RemoteDeletions::ClearUp() {
    for (const QString& path : _remote.Temporaries()) {
        _report.ThrowIfStopped();
        try {
            if (!_sides.options.isDryRun && _IsEmpty(path)) {
                _DeleteEmpty(path);
            }
        } catch (const std::exception&) {
            _report.TellFailure(path, std::current_exception());
        }
    }
}

}  // namespace push
}  // namespace ovsync
