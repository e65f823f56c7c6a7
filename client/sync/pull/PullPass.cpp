#include "client/sync/pull/PullPass.h"

#include <algorithm>
#include <utility>

#include "client/sync/pull/Downloader.h"
#include "client/sync/pull/LocalChanges.h"
#include "client/sync/report/Cancelled.h"

namespace ovsync {
namespace pull {

using local::LocalEntry;
using local::LocalSnapshot;
using pass::FileComparison;
using pass::RecordMaker;
using pass::RemoteTree;
using pass::SyncPass;
using report::Cancelled;
using report::SyncEvent;
using report::SyncOutcome;
using store::RecordDatabase;

namespace {

QString LastPassSetting() {
    return QStringLiteral("last complete pull");
}

QString LastFilterSetting() {
    return QStringLiteral("excluded from it");
}

}  // namespace

SyncOutcome PullPass::Run() {
    return _pass.Run([this] { _Pull(); });
}

void PullPass::_Pull() {
    LocalSnapshot snapshot = _pass.Begin();
    const SyncPass::Listing listing = _List(snapshot);
    if (!listing.tree) {
        return;
    }
    const RemoteTree& remote = *listing.tree;
    const RecordMaker maker(_sides.service, listing.at);
    const FileComparison comparison(_sides, maker);
    PullPlan plan(_sides, comparison, maker, remote, _report);
    LocalChanges changes(_sides, _pass.Installing(), _report, snapshot);
    GoneCheck check(_sides.service, remote);

    PullPlan::Deletions gone = plan.FindGone(snapshot);
    _sides.records.Write(gone.records);
    _report.Tell(gone.events);
    const bool deletes =
        _sides.options.deletes && _MayDelete(gone.inTheWay.files.size() + gone.others.files.size(), remote);
    if (deletes) {
        changes.Delete(_Confirmed(std::move(gone.inTheWay), check));
    } else if (!_sides.options.deletes) {
        _Keep(gone.inTheWay, QString());
        _Keep(gone.others, QString());
    }

    const PullPlan::Folders folders = plan.FindFolders(snapshot);
    _sides.records.Write(folders.records);
    _report.Tell(folders.events);
    changes.MakeFolders(folders.missing);

    PullPlan::Fetches fetches = plan.FindFetches(snapshot);
    _sides.records.Write(fetches.records);
    _report.Tell(fetches.events);
    const bool hasAll =
        Downloader(_sides, _pass.Installing(), comparison, maker, _report).Run(std::move(fetches.orders));

    // What came under another name, or elsewhere, has to be here before it goes.
    if (deletes && hasAll) {
        changes.Delete(_Confirmed(std::move(gone.others), check));
    } else if (deletes) {
        _Keep(gone.others, QStringLiteral(", because not everything could be fetched"));
    }
    _sides.records.Write(plan.FindEndedConflicts());
    _WriteLastPass(_report.Outcome() == SyncOutcome::InStep ? listing.at : QDateTime());
}

SyncPass::Listing PullPass::_List(const LocalSnapshot& snapshot) {
    const QDateTime lastPass = QDateTime::fromString(_sides.records.Setting(LastPassSetting()), Qt::ISODate);
    const bool isSameFilter = _sides.records.Setting(LastFilterSetting()) == _sides.options.exclusion.Text();
    if (!lastPass.isValid() || !isSameFilter || !_IsAllHere(snapshot)) {
        return _pass.List(QDateTime(), snapshot);
    }
    // When nothing changed the time stays as it is: a wrong answer then costs one pass, and not every change up to it.
    SyncPass::Listing listing = _pass.List(lastPass, snapshot);
    const bool wasAhead = listing.at.isValid() && listing.at < lastPass;
    return listing.tree || !wasAhead ? listing : _pass.List(QDateTime(), snapshot);
}

bool PullPass::_IsAllHere(const LocalSnapshot& snapshot) {
    for (const QString& path : _sides.records.FilePaths()) {
        if (!snapshot.Has(path, LocalEntry::Kind::File) && !_sides.exclusion.HasFileAt(path)) {
            return false;
        }
    }
    for (const QString& path : _sides.records.Folders()) {
        if (!snapshot.HasFolder(path) && !_sides.exclusion.HasFolderAt(path)) {
            return false;
        }
    }
    return true;
}

bool PullPass::_MayDelete(int deletions, const RemoteTree& remote) {
    const int files = _sides.records.FilePaths().size();
    if (_sides.options.deletionLimit.Allows(deletions, files, !remote.AllFiles().isEmpty())) {
        return true;
    }
    _report.Tell(SyncEvent::Kind::Kept, QStringLiteral("."),
                 QStringLiteral("the service lacks %1 of the %2 files here, which is too many to be deleted without a "
                                "word; nothing is. Look whether they should go, and give --max-delete %1 then")
                     .arg(deletions)
                     .arg(files));
    return false;
}

PullPlan::Gone PullPass::_Confirmed(PullPlan::Gone gone, GoneCheck& check) {
    const auto isThere = [this, &check](const QString& path) {
        try {
            _report.ThrowIfStopped();
            if (check.IsGone(path)) {
                return false;
            }
            _report.Tell(SyncEvent::Kind::Kept, path,
                         QStringLiteral("the listing lacks it, but the service still has it"));
        } catch (const Cancelled&) {
            throw;
        } catch (const std::exception&) {
            _report.TellFailure(path, std::current_exception());
        }
        return true;
    };
    gone.folders.erase(std::remove_if(gone.folders.begin(), gone.folders.end(), isThere), gone.folders.end());
    const auto isFileThere = [&isThere](const store::Placement& file) { return isThere(file.record.path); };
    gone.files.erase(std::remove_if(gone.files.begin(), gone.files.end(), isFileThere), gone.files.end());
    return gone;
}

void PullPass::_Keep(const PullPlan::Gone& gone, const QString& reason) {
    const QString detail = QStringLiteral("it was deleted on the service") + reason;
    for (const QString& folder : gone.folders) {
        _report.Tell(SyncEvent::Kind::Kept, folder, detail);
    }
    for (const store::Placement& file : gone.files) {
        _report.Tell(SyncEvent::Kind::Kept, file.record.path, detail);
    }
}

void PullPass::_WriteLastPass(const QDateTime& time) {
    RecordDatabase::Transaction transaction(_sides.records);
    _sides.records.WriteSetting(LastPassSetting(), time.toUTC().toString(Qt::ISODate));
    _sides.records.WriteSetting(LastFilterSetting(), _sides.options.exclusion.Text());
    transaction.Commit();
}

}  // namespace pull
}  // namespace ovsync
