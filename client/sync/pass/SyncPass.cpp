#include "client/sync/pass/SyncPass.h"

#include "client/sync/local/LocalError.h"
#include "client/wire/HttpStatus.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace pass {

using local::ILocalTree;
using local::LocalError;
using local::LocalSnapshot;
using report::ISyncObserver;
using report::SyncEvent;
using report::SyncOutcome;
using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;
using sync::http::HttpException;
using wire::HttpStatus;

namespace {

QString AddressSetting() {
    return QStringLiteral("address");
}

}  // namespace

SyncPass::SyncPass(const ServiceFolder& service, ILocalTree& tree, store::RecordDatabase& records,
                   const SyncOptions& options, ISyncObserver& observer)
    : _dryRunTree(tree),
      _sides{service, options.isDryRun ? _dryRunTree : tree, records, options, options.exclusion},
      _trash(_sides.tree, QDateTime::currentDateTimeUtc(), options.daysKept),
      _installer(_sides.tree, records, _trash),
      _report(options, observer) {}

LocalSnapshot SyncPass::Begin() {
    _CheckAddress();
    _report.Tell(_installer.Recover());
    _report.Tell(_trash.RemoveOld());
    LocalSnapshot snapshot = LocalSnapshot::Of(_sides.tree, _sides.exclusion);
    for (const QString& leftover : snapshot.temporaryFiles) {
        try {
            _installer.ClearUp(leftover);
        } catch (const LocalError&) {
            _report.TellFailure(leftover, std::current_exception());
        }
    }
    _report.Tell(snapshot.closed);
    return snapshot;
}

void SyncPass::_CheckAddress() {
    const QString known = _sides.records.Setting(AddressSetting());
    if (!known.isEmpty() && known != _sides.service.address) {
        throw WrongFolder(QStringLiteral("%1 is in step with %2 and cannot be synced with %3")
                              .arg(_sides.service.folder.localPath, known, _sides.service.address));
    }
}

SyncPass::Listing SyncPass::List(const QDateTime& since, const LocalSnapshot& snapshot) {
    const ServiceFolder& service = _sides.service;
    FolderConfiguration folder = service.folder;
    folder.setLastSyncTime(since);
    std::shared_ptr<QVector<FolderConfiguration>> folders;
    std::shared_ptr<QVector<FileConfiguration>> files;
    const int status = service.folders->GetAllFilesAndSubFoldersByFolder(folder, folders, files);
    _report.ThrowIfStopped();
    if (status == HttpStatus::NotFound) {
        throw HttpException(QStringLiteral("There is no folder %1").arg(service.address), status, QUrl());
    }
    Listing listing;
    listing.at = folder.getLastServerSyncRequestTime();
    if (status != 0) {
        return listing;
    }
    RemoteTree& tree = listing.tree.emplace(service, *folders, *files, _sides.exclusion);
    _sides.records.WriteSetting(AddressSetting(), service.address);
    tree.RefuseClashes(snapshot.entries.keys(), _sides.tree.TellsCaseApart(), _sides.tree.TellsUnicodeFormsApart());
    _report.Tell(tree.Refused());
    for (const SyncEvent& closed : snapshot.closed) {
        tree.LeaveOut(closed.path);
    }
    return listing;
}

SyncOutcome SyncPass::Run(const std::function<void()>& pass) const {
    try {
        pass();
        return _report.Outcome();
    } catch (const std::exception&) {
        // Whatever is under way ends with an error of its own when it is stopped.
        if (*_sides.options.isStopped) {
            return SyncOutcome::Cancelled;
        }
        throw;
    }
}

}  // namespace pass
}  // namespace ovsync
