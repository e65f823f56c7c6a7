#include "client/sync/pull/PullPass.h"

#include <QSet>
#include <algorithm>
#include <utility>

#include "client/sync/local/LocalError.h"
#include "client/sync/local/PathNames.h"
#include "client/sync/pass/RemoteVersion.h"
#include "client/sync/pull/Downloader.h"
#include "client/sync/report/Cancelled.h"

namespace ovsync {
namespace pull {

using local::FolderOf;
using local::Installer;
using local::LocalEntry;
using local::LocalError;
using local::LocalSnapshot;
using pass::LikelySize;
using pass::RemoteTree;
using report::Cancelled;
using report::SyncEvent;
using report::SyncOutcome;
using store::RecordDatabase;

namespace {

const int RemovalsAtOnce = 256;

QString LastPassSetting() {
    return QStringLiteral("last complete pull");
}

QString LastFilterSetting() {
    return QStringLiteral("excluded from it");
}

void AddFoldersOf(const QString& path, QSet<QString>& folders) {
    for (QString folder = FolderOf(path); !folder.isEmpty(); folder = FolderOf(folder)) {
        folders.insert(folder);
    }
}

}  // namespace

SyncOutcome PullPass::Run() {
    return _context.Run([this] { _Pull(); });
}

void PullPass::_Pull() {
    LocalSnapshot snapshot = _context.Begin();
    const std::optional<RemoteTree> remote = _List(snapshot);
    if (!remote) {
        return;
    }
    PullPlan plan(_context);
    PullPlan::Gone inTheWay;
    PullPlan::Gone others;
    plan.FindGone(*remote, snapshot, inTheWay, others);
    const bool deletes = _context.Options().deletes && _MayDelete(inTheWay.files.size() + others.files.size(), *remote);
    if (!_context.Options().deletes) {
        _Keep(inTheWay, QString());
        _Keep(others, QString());
    }
    GoneCheck check(_context.Service(), *remote);
    if (deletes) {
        _Delete(_Confirmed(std::move(inTheWay), check), snapshot);
    }
    const std::deque<PullOrder> orders = plan.FindOrders(*remote, snapshot);
    bool hasAll = true;
    if (_context.Options().isDryRun) {
        _TellOrders(orders);
    } else {
        hasAll = Downloader(_context).Run(orders);
    }
    // What came under another name, or elsewhere, has to be here before it goes.
    if (deletes && hasAll) {
        _Delete(_Confirmed(std::move(others), check), snapshot);
    } else if (deletes) {
        _Keep(others, QStringLiteral(", because not everything could be fetched"));
    }
    if (!_context.Options().isDryRun) {
        plan.ForgetCopies();
        _WriteLastPass(_context.Outcome() == SyncOutcome::InStep ? _context.ListedAt() : QDateTime());
    }
}

std::optional<RemoteTree> PullPass::_List(const LocalSnapshot& snapshot) {
    const QDateTime lastPass = QDateTime::fromString(_context.Records().Setting(LastPassSetting()), Qt::ISODate);
    const bool isSameFilter = _context.Records().Setting(LastFilterSetting()) == _context.Options().exclusion.Text();
    if (!lastPass.isValid() || !isSameFilter || !_IsAllHere(snapshot)) {
        return _context.List(QDateTime(), snapshot);
    }
    // When nothing changed the time stays as it is: a wrong answer then costs one pass, and not every change up to it.
    std::optional<RemoteTree> remote = _context.List(lastPass, snapshot);
    const bool wasAhead = _context.ListedAt().isValid() && _context.ListedAt() < lastPass;
    return remote || !wasAhead ? remote : _context.List(QDateTime(), snapshot);
}

bool PullPass::_MayDelete(int deletions, const RemoteTree& remote) {
    const int files = _context.Records().FilePaths().size();
    if (_context.Options().deletionLimit.Allows(deletions, files, !remote.AllFiles().isEmpty())) {
        return true;
    }
    _context.Report(
        SyncEvent::Kind::Kept, QStringLiteral("."),
        QStringLiteral("the service lacks %1 of the %2 files here, which is too many to be deleted without a "
                       "word; nothing is. Look whether they should go, and give --max-delete %1 then")
            .arg(deletions)
            .arg(files));
    return false;
}

PullPlan::Gone PullPass::_Confirmed(PullPlan::Gone gone, GoneCheck& check) {
    const auto isThere = [this, &check](const QString& path) {
        try {
            _context.ThrowIfStopped();
            if (check.IsGone(path)) {
                return false;
            }
            _context.Report(SyncEvent::Kind::Kept, path,
                            QStringLiteral("the listing lacks it, but the service still has it"));
        } catch (const Cancelled&) {
            throw;
        } catch (const std::exception&) {
            _context.ReportFailure(path, std::current_exception());
        }
        return true;
    };
    gone.folders.erase(std::remove_if(gone.folders.begin(), gone.folders.end(), isThere), gone.folders.end());
    const auto isFileThere = [&isThere](const store::Placement& file) { return isThere(file.record.path); };
    gone.files.erase(std::remove_if(gone.files.begin(), gone.files.end(), isFileThere), gone.files.end());
    return gone;
}

bool PullPass::_IsAllHere(const LocalSnapshot& snapshot) {
    const auto isHere = [&snapshot](const QString& path, LocalEntry::Kind kind) {
        const auto entry = snapshot.entries.find(path);
        return entry != snapshot.entries.end() && entry->kind == kind;
    };
    for (const QString& path : _context.Records().FilePaths()) {
        if (!isHere(path, LocalEntry::Kind::File) && !_context.Excluded().HasFileAt(path)) {
            return false;
        }
    }
    for (const QString& path : _context.Records().Folders()) {
        if (!isHere(path, LocalEntry::Kind::Folder) && !_context.Excluded().HasFolderAt(path)) {
            return false;
        }
    }
    return true;
}

void PullPass::_TellOrders(const std::deque<PullOrder>& orders) {
    for (const PullOrder& order : orders) {
        if (order.target == PullOrder::Target::Beside) {
            _context.Report(SyncEvent::Kind::Conflict, order.path,
                            QStringLiteral("it changed here and on the service, whose version would be put beside it"));
        } else {
            _context.Report(
                order.target == PullOrder::Target::New ? SyncEvent::Kind::Fetched : SyncEvent::Kind::Updated,
                order.path, QString(), LikelySize(order.remote.size));
        }
    }
}

void PullPass::_Delete(const PullPlan::Gone& gone, LocalSnapshot& snapshot) {
    const QSet<QString> unfinished = _DeleteFiles(gone.files, snapshot);
    _DeleteFolders(gone.folders, unfinished, snapshot);
}

QSet<QString> PullPass::_DeleteFiles(QVector<store::Placement> files, LocalSnapshot& snapshot) {
    QSet<QString> unfinished;
    for (int start = 0; start < files.size(); start += RemovalsAtOnce) {
        _context.ThrowIfStopped();
        QVector<Installer::Request> requests;
        for (const store::Placement& removal : files.mid(start, RemovalsAtOnce)) {
            Installer::Request request;
            request.placement = removal;
            request.result = Installer::Result::Done;
            requests.append(request);
        }
        if (!_context.Options().isDryRun) {
            _context.Installing().Install(requests);
        }
        for (const Installer::Request& request : requests) {
            const QString& path = request.placement.record.path;
            switch (request.result) {
                case Installer::Result::Done:
                    snapshot.entries.remove(path);
                    _context.Report(SyncEvent::Kind::Deleted, path);
                    break;
                case Installer::Result::Occupied:
                    _context.Report(SyncEvent::Kind::Kept, path,
                                    QStringLiteral("it was deleted on the service, but has just changed here"));
                    break;
                case Installer::Result::Failed:
                    _context.Report(SyncEvent::Kind::Refused, path, request.error);
                    AddFoldersOf(path, unfinished);
                    break;
            }
        }
    }
    return unfinished;
}

void PullPass::_DeleteFolders(const QStringList& folders, QSet<QString> unfinished, LocalSnapshot& snapshot) {
    if (_context.Options().isDryRun) {
        _TryDeletingFolders(folders, snapshot);
        return;
    }
    RecordDatabase::Transaction transaction(_context.Records());
    for (int i = folders.size() - 1; i >= 0; --i) {
        const QString& path = folders[i];
        try {
            if (_context.Tree().RemoveFolder(path)) {
                snapshot.entries.remove(path);
                _context.Report(SyncEvent::Kind::Deleted, path);
            }
            // One that still holds something else is this side's own from now on.
            if (!unfinished.contains(path)) {
                _context.Records().ForgetFolder(path);
            }
        } catch (const LocalError&) {
            AddFoldersOf(path, unfinished);
            _context.ReportFailure(path, std::current_exception());
        }
    }
    transaction.Commit();
}

void PullPass::_TryDeletingFolders(const QStringList& folders, LocalSnapshot& snapshot) {
    QSet<QString> gone(folders.begin(), folders.end());
    for (auto entry = snapshot.entries.begin(); entry != snapshot.entries.end(); ++entry) {
        const bool goes = entry->kind == LocalEntry::Kind::Folder && gone.contains(entry.key());
        for (QString above = goes ? QString() : FolderOf(entry.key()); !above.isEmpty(); above = FolderOf(above)) {
            gone.remove(above);
        }
    }
    for (int i = folders.size() - 1; i >= 0; --i) {
        if (gone.contains(folders[i])) {
            snapshot.entries.remove(folders[i]);
            _context.Report(SyncEvent::Kind::Deleted, folders[i]);
        }
    }
}

void PullPass::_Keep(const PullPlan::Gone& gone, const QString& reason) {
    const QString detail = QStringLiteral("it was deleted on the service") + reason;
    for (const QString& folder : gone.folders) {
        _context.Report(SyncEvent::Kind::Kept, folder, detail);
    }
    for (const store::Placement& file : gone.files) {
        _context.Report(SyncEvent::Kind::Kept, file.record.path, detail);
    }
}

void PullPass::_WriteLastPass(const QDateTime& time) {
    RecordDatabase::Transaction transaction(_context.Records());
    _context.Records().WriteSetting(LastPassSetting(), time.toUTC().toString(Qt::ISODate));
    _context.Records().WriteSetting(LastFilterSetting(), _context.Options().exclusion.Text());
    transaction.Commit();
}

}  // namespace pull
}  // namespace ovsync
