#include "client/sync/pass/SyncPass.h"

#include <QSet>

#include "client/sync/local/LocalError.h"
#include "client/sync/pass/HeldLocks.h"
#include "client/sync/pass/PassCommand.h"
#include "client/sync/pass/RemoteVersion.h"
#include "client/sync/report/FolderMissing.h"
#include "client/sync/report/OfferedCommand.h"
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

QString LastPassSetting() {
    return QStringLiteral("last complete pull");
}

QString LastFilterSetting() {
    return QStringLiteral("excluded from it");
}

/// For people: how the synced folder forgets what it was in step with.
QString WayOut(const QString& purpose, const ServiceFolder& service, const SyncOptions& options) {
    return QStringLiteral("%1, remove \"%2/%3\" and run \"%4\"")
        .arg(purpose, service.folder.localPath, store::RecordDatabase::FilePath(),
             PassCommand(QStringLiteral("sync"), service, options));
}

}  // namespace

SyncPass::SyncPass(const ServiceFolder& service, ILocalTree& tree, store::RecordDatabase& records,
                   const SyncOptions& options, ISyncObserver& observer)
    : _dryRunTree(tree),
      _scope(records),
      _sides{service, options.isDryRun ? _dryRunTree : tree, records, options, options.exclusion, _scope},
      _trash(_sides.tree, QDateTime::currentDateTimeUtc(), options.daysKept),
      _installer(_sides.tree, records, _trash),
      _report(options, observer) {}

void SyncPass::Prepare() {
    _sides.records.Check();
    _report.Tell(_installer.Recover());
    _report.Tell(_trash.RemoveOld());
    if (!_sides.options.isDryRun) {
        HeldLocks(_sides.records).Release(_sides.service);
    }
}

LocalSnapshot SyncPass::Look() {
    LocalSnapshot snapshot = LocalSnapshot::Of(_sides.tree, _sides.exclusion);
    QSet<QString> parts;
    for (const store::PartialDownload& part : _sides.records.PartialDownloads()) {
        parts.insert(part.temporary);
    }
    for (const QString& leftover : snapshot.temporaryFiles) {
        try {
            if (!parts.contains(leftover)) {
                _installer.ClearUp(leftover);
            }
        } catch (const LocalError&) {
            _report.TellFailure(leftover, std::current_exception());
        }
    }
    _report.Tell(snapshot.closed);
    return snapshot;
}

bool SyncPass::WasInStep() const {
    return !_sides.records.Setting(AddressSetting()).isEmpty();
}

void SyncPass::CheckFolder() {
    // Both were opened by the path, at which a disk may have come or gone in between.
    const QString root = _sides.records.Root();
    if (!root.isEmpty() && root != _sides.tree.Identity()) {
        throw WrongFolder(QStringLiteral("another folder, or another disk, has just come in the place of %1")
                              .arg(_sides.service.folder.localPath));
    }
    RequireSameService(_sides.records, _sides.service, _sides.options);
}

void SyncPass::RequireSameService(store::RecordDatabase& records, const ServiceFolder& service,
                                  const SyncOptions& options) {
    const QString known = records.Setting(AddressSetting());
    if (!known.isEmpty() && known != service.address) {
        throw WrongFolder(
            QStringLiteral("%1 is in step with %2 and cannot be synced with %3. %4")
                .arg(service.folder.localPath, known, service.address,
                     WayOut(QStringLiteral("To bring it in step with that one instead"), service, options)));
    }
}

SyncPass::Listing SyncPass::List(const QDateTime& since, const LocalSnapshot& snapshot) {
    std::optional<Listing> listing = _Ask(since, snapshot);
    if (!listing) {
        _ThrowMissing();
    }
    return *std::move(listing);
}

SyncPass::Listing SyncPass::ListOrMake(const LocalSnapshot& snapshot) {
    if (std::optional<Listing> listing = _Ask(QDateTime(), snapshot)) {
        return *std::move(listing);
    }
    if (WasInStep()) {
        _ThrowMissing();
    }
    if (_sides.options.isDryRun) {
        _sides.service.requirePlace();
    } else {
        _sides.service.make();
    }
    _report.Tell(SyncEvent::Kind::FolderSent, QStringLiteral("."));
    Listing listing;
    listing.tree.emplace(TreeOf({}, {}, snapshot));
    return listing;
}

std::optional<SyncPass::Listing> SyncPass::_Ask(const QDateTime& since, const LocalSnapshot& snapshot) {
    FolderConfiguration folder = _sides.service.folder;
    folder.setLastSyncTime(since);
    std::shared_ptr<QVector<FolderConfiguration>> folders;
    std::shared_ptr<QVector<FileConfiguration>> files;
    const int status = _sides.service.folders->GetAllFilesAndSubFoldersByFolder(folder, folders, files);
    _report.ThrowIfStopped();
    if (status == HttpStatus::NotFound) {
        return std::nullopt;
    }
    Listing listing;
    listing.at = folder.getLastServerSyncRequestTime();
    if (status == 0) {
        listing.tree.emplace(TreeOf(*folders, *files, snapshot));
    }
    _RemoveUselessParts(listing);
    return listing;
}

void SyncPass::_RemoveUselessParts(const Listing& listing) {
    for (const store::PartialDownload& part : _sides.records.PartialDownloads()) {
        const bool isWanted = listing.tree && listing.tree->HasFile(part.path) &&
                              IsOfVersion(listing.tree->AllFiles()[part.path], part.identity);
        if (isWanted) {
            continue;
        }
        try {
            _sides.tree.Remove(part.temporary);
            _sides.records.ForgetPartialDownload(part.path);
        } catch (const LocalError&) {
            _report.TellFailure(part.temporary, std::current_exception());
        }
    }
}

RemoteTree SyncPass::TreeOf(const QVector<FolderConfiguration>& folders, const QVector<FileConfiguration>& files,
                            const LocalSnapshot& snapshot) {
    RemoteTree tree(_sides.service, folders, files, _sides.exclusion);
    if (_sides.records.Setting(AddressSetting()).isEmpty()) {
        _sides.records.WriteSetting(AddressSetting(), _sides.service.address);
    }
    _RefuseClashes(tree, snapshot);
    _report.Tell(tree.Refused());
    for (const SyncEvent& closed : snapshot.closed) {
        tree.LeaveOut(closed.path);
    }
    return tree;
}

void SyncPass::_RefuseClashes(RemoteTree& tree, const LocalSnapshot& snapshot) {
    const bool tellsCaseApart = _sides.tree.TellsCaseApart();
    const bool tellsFormsApart = _sides.tree.TellsUnicodeFormsApart();
    if (tellsCaseApart && tellsFormsApart) {
        return;
    }
    QStringList paths = snapshot.entries.keys();
    if (!_scope.IsWhole()) {
        paths += _sides.records.FilePaths() + _sides.records.Folders();
    }
    tree.RefuseClashes(paths, tellsCaseApart, tellsFormsApart);
}

void SyncPass::_ThrowMissing() const {
    if (WasInStep()) {
        throw report::FolderMissing(
            QStringLiteral("%1 is not there any more: it was deleted or moved on the service. Nothing is changed here. "
                           "%2; if it was moved, do that with its new URL")
                .arg(_sides.service.address, WayOut(QStringLiteral("To make it there again and send everything"),
                                                    _sides.service, _sides.options)));
    }
    throw HttpException(QStringLiteral("There is no folder %1").arg(_sides.service.address), HttpStatus::NotFound,
                        QUrl());
}

SyncPass::Listing SyncPass::ListChanges(const LocalSnapshot& snapshot) {
    const QDateTime lastPass = QDateTime::fromString(_sides.records.Setting(LastPassSetting()), Qt::ISODate);
    const bool isSameFilter = _sides.records.Setting(LastFilterSetting()) == _sides.options.exclusion.Text();
    if (!lastPass.isValid() || !isSameFilter) {
        return List(QDateTime(), snapshot);
    }
    // When nothing changed the time stays as it is: a wrong answer then costs one pass, and not every change up to it.
    Listing listing = List(lastPass, snapshot);
    const bool wasAhead = listing.at.isValid() && listing.at < lastPass;
    return listing.tree || !wasAhead ? std::move(listing) : List(QDateTime(), snapshot);
}

void SyncPass::EndListing(const Listing& listing) {
    const QDateTime time = _report.Outcome() == SyncOutcome::InStep ? listing.at : QDateTime();
    store::RecordDatabase::Transaction transaction(_sides.records);
    _sides.records.WriteSetting(LastPassSetting(), time.toUTC().toString(Qt::ISODate));
    _sides.records.WriteSetting(LastFilterSetting(), _sides.options.exclusion.Text());
    transaction.Commit();
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
