#include "client/sync/pull/LocalDeletions.h"

#include <algorithm>

#include "client/sync/pass/PassCommand.h"
#include "client/sync/report/Cancelled.h"

namespace ovsync {
namespace pull {

using pass::PassCommand;
using report::Cancelled;
using report::SyncEvent;

bool LocalDeletions::MayDelete(int deletions) {
    if (deletions == 0) {
        return true;
    }
    const int files = _sides.records.FileCount();
    const bool isAnyThere = !_remote.AllFiles().isEmpty() || _sides.scope.LeavesFilesOut();
    if (_sides.options.deletionLimit.Allows(deletions, files, isAnyThere)) {
        return true;
    }
    _limit = QStringLiteral(
                 "the service lacks %1 of the %2 files here, which is too many to be deleted without a word; nothing "
                 "is. ")
                 .arg(deletions)
                 .arg(files);
    _refusedDeletions = deletions;
    return false;
}

void LocalDeletions::TellOfLimit(bool isAllTransferred) {
    if (_limit.isEmpty()) {
        return;
    }
    const char* const command = _sides.options.deletes ? "pull --delete --max-delete %1" : "sync --max-delete %1";
    const QString wayOut =
        isAllTransferred
            ? QStringLiteral("Look whether they should go, and run \"%1\" then")
                  .arg(PassCommand(QString::fromLatin1(command).arg(_refusedDeletions), _sides.service, _sides.options))
            : pass::TransfersFirst();
    _report.Tell(SyncEvent::Kind::Kept, QStringLiteral("."), _limit + wayOut);
}

void LocalDeletions::Delete(PullPlan::Gone gone) {
    const auto isThere = [this](const QString& path) { return _IsThere(path); };
    gone.folders.erase(std::remove_if(gone.folders.begin(), gone.folders.end(), isThere), gone.folders.end());
    const auto isFileThere = [this](const store::Placement& file) { return _IsThere(file.record.path); };
    gone.files.erase(std::remove_if(gone.files.begin(), gone.files.end(), isFileThere), gone.files.end());
    _changes.Delete(gone);
}

void LocalDeletions::Postpone(const PullPlan::Gone& gone) {
    for (const store::Placement& file : gone.files) {
        _report.LeaveOpen(file.record.path);
    }
}

void LocalDeletions::Keep(const PullPlan::Gone& gone) {
    _Tell(SyncEvent::Kind::Kept, gone, QStringLiteral("it was deleted on the service"));
}

void LocalDeletions::PutOff(const PullPlan::Gone& gone) {
    _Tell(SyncEvent::Kind::Waiting, gone,
          QStringLiteral("it was deleted on the service, and stays here until everything else is transferred"));
}

void LocalDeletions::_Tell(SyncEvent::Kind kind, const PullPlan::Gone& gone, const QString& detail) {
    for (const QString& folder : gone.folders) {
        _report.Tell(kind, folder, detail);
    }
    for (const store::Placement& file : gone.files) {
        _report.Tell(kind, file.record.path, detail);
    }
}

bool LocalDeletions::_IsThere(const QString& path) {
    try {
        _report.ThrowIfStopped();
        if (_check.IsGone(path)) {
            return false;
        }
        _report.Tell(SyncEvent::Kind::Kept, path, QStringLiteral("the listing lacks it, but the service still has it"));
    } catch (const Cancelled&) {
        throw;
    } catch (const std::exception&) {
        _report.TellFailure(path, std::current_exception());
    }
    return true;
}

}  // namespace pull
}  // namespace ovsync
