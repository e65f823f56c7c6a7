#include "client/sync/pass/PassContext.h"
#include "client/wire/HttpStatus.h"

#include "client/store/StoreError.h"
#include "client/sync/local/LocalContent.h"
#include "client/sync/local/LocalError.h"
#include "client/sync/local/PathNames.h"
#include "client/sync/pass/RemoteContent.h"
#include "client/sync/pass/RemoteVersion.h"
#include "client/sync/pass/WholeTreeCheck.h"
#include "client/sync/pass/WrongFolder.h"
#include "client/sync/report/Cancelled.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace pass {

using local::FolderOf;
using local::ILocalTree;
using local::LocalContent;
using local::LocalEntry;
using local::LocalError;
using local::LocalSnapshot;
using local::Recordable;
using report::Cancelled;
using report::ISyncObserver;
using report::SyncEvent;
using report::SyncOutcome;
using store::FileRecord;
using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;
using sync::http::HttpException;
using wire::HttpStatus;

namespace {

const int PatienceWithFailures = 3;

/// Whether such an answer says no to what was asked. Others mean that the service itself did not answer.
bool IsRefusal(int status) {
    return status >= HttpStatus::BadRequest && status != HttpStatus::BadGateway &&
           status != HttpStatus::ServiceUnavailable && status != HttpStatus::GatewayTimeout;
}

QString AddressSetting() {
    return QStringLiteral("address");
}

}  // namespace

PassContext::PassContext(const ServiceFolder& service, ILocalTree& tree, store::RecordDatabase& records,
                         const SyncOptions& options, ISyncObserver& observer)
    : _service(service),
      _tree(tree),
      _records(records),
      _options(options),
      _exclusion(options.exclusion),
      _trash(tree, QDateTime::currentDateTimeUtc(), options.daysKept),
      _installer(tree, records, _trash),
      _observer(observer) {}

void PassContext::ThrowIfStopped() const {
    Cancelled::ThrowIf(*_options.isStopped);
}

LocalSnapshot PassContext::Begin() {
    _CheckAddress();
    if (!_options.isDryRun) {
        for (const SyncEvent& event : _installer.Recover()) {
            Report(event);
        }
        for (const SyncEvent& event : _trash.RemoveOld()) {
            Report(event);
        }
    }
    LocalSnapshot snapshot = LocalSnapshot::Of(_tree, _exclusion);
    if (!_options.isDryRun) {
        for (const QString& leftover : snapshot.temporaryFiles) {
            try {
                _installer.ClearUp(leftover);
            } catch (const LocalError&) {
                ReportFailure(leftover, std::current_exception());
            }
        }
    }
    for (const SyncEvent& event : snapshot.closed) {
        Report(event);
    }
    return snapshot;
}

void PassContext::_CheckAddress() {
    const QString known = _records.Setting(AddressSetting());
    if (!known.isEmpty() && known != _service.address) {
        throw WrongFolder(QStringLiteral("%1 is in step with %2 and cannot be synced with %3")
                              .arg(_service.folder.localPath, known, _service.address));
    }
}

std::optional<RemoteTree> PassContext::List(const QDateTime& since, const LocalSnapshot& snapshot) {
    FolderConfiguration folder = _service.folder;
    folder.setLastSyncTime(since);
    std::shared_ptr<QVector<FolderConfiguration>> folders;
    std::shared_ptr<QVector<FileConfiguration>> files;
    const int status = _service.folders->GetAllFilesAndSubFoldersByFolder(folder, folders, files);
    ThrowIfStopped();
    if (status == HttpStatus::NotFound) {
        throw HttpException(QStringLiteral("The service has no folder %1").arg(_service.address), status, QUrl());
    }
    _listedAt = folder.getLastServerSyncRequestTime();
    if (status != 0) {
        return std::nullopt;
    }
    RequireWholeTree(_service, *folders, *files);
    RemoteTree tree(_service, *folders, *files, _exclusion);
    if (!_options.isDryRun) {
        _records.WriteSetting(AddressSetting(), _service.address);
        tree.RefuseClashes(snapshot.entries.keys(), _tree.TellsCaseApart(), _tree.TellsUnicodeFormsApart());
    }
    for (const SyncEvent& event : tree.Refused()) {
        Report(event);
    }
    for (const SyncEvent& closed : snapshot.closed) {
        tree.LeaveOut(closed.path);
    }
    return tree;
}

LocalFileState PassContext::Compare(const QString& path, const LocalSnapshot& snapshot,
                                    std::optional<FileRecord>& record) {
    LocalFileState file;
    const auto found = snapshot.entries.find(path);
    if (found == snapshot.entries.end()) {
        return file;
    }
    file.entry = *found;
    if (found->kind != LocalEntry::Kind::File) {
        file.state = found->kind == LocalEntry::Kind::Folder ? LocalState::Folder : LocalState::Other;
        return file;
    }
    if (!record) {
        file.state = LocalState::Unknown;
        return file;
    }
    if (found->fingerprint.IsUnchangedSince(record->local)) {
        file.state = LocalState::Unchanged;
        file.md5 = record->contentMd5;
        return file;
    }
    file.state = LocalState::Changed;
    if (found->fingerprint.size != record->local.size) {
        return file;
    }
    Read(path, file);
    if (!file.md5.isEmpty() && file.md5 == record->contentMd5) {
        file.state = LocalState::Unchanged;
        record->local = Recordable(file.entry->fingerprint);
        if (!_options.isDryRun) {
            _records.WriteFile(*record);
        }
    }
    return file;
}

void PassContext::Read(const QString& path, LocalFileState& file) {
    try {
        if (const std::optional<LocalContent> content = LocalContent::Of(_tree, path, *_options.isStopped)) {
            file.md5 = content->md5;
            file.entry->fingerprint = content->fingerprint;
        }
    } catch (const LocalError& e) {
        // What cannot be read counts as changed, and so stays as it is.
        if (e.ConcernsWholeDisk()) {
            throw;
        }
    }
}

bool PassContext::HasContentOf(const QString& path, const FileConfiguration& remote, LocalFileState& file) {
    if (!IsContentOf(remote, file.entry->fingerprint.size, QString())) {
        return false;
    }
    if (remote.md5Checksum.isEmpty()) {
        // A date and a size tell nothing for sure.
        return false;
    }
    if (file.md5.isEmpty()) {
        Read(path, file);
    }
    return !file.md5.isEmpty() && IsContentOf(remote, file.entry->fingerprint.size, file.md5);
}

RemoteState PassContext::StateOf(const QString& path, const FileConfiguration& remote,
                                 std::optional<FileRecord>& record) {
    if (!record) {
        return RemoteState::New;
    }
    if (IsOlder(remote, record->file)) {
        return RemoteState::Older;
    }
    // The size is compared as listings have it: the library also records the true one, which needs more bits.
    FileConfiguration local = record->file;
    local.size = ListedSize(local.size);
    const bool isNew =
        IdentityOf(remote) != IdentityOf(record->file) || _service.files->ShouldDownloadFile(remote, local);
    if (!isNew) {
        return RemoteState::Same;
    }
    if (!_HasContentOfRecord(remote, *record)) {
        return RemoteState::New;
    }
    FileRecord renewed = RecordOf(path, remote);
    renewed.local = record->local;
    renewed.contentMd5 = record->contentMd5;
    record = renewed;
    if (!_options.isDryRun) {
        _records.WriteFile(renewed);
    }
    return RemoteState::Same;
}

bool PassContext::_HasContentOfRecord(const FileConfiguration& remote, const FileRecord& record) {
    const bool isInDoubt =
        record.file.versionId.isEmpty() && record.file.md5Checksum.isEmpty() && !record.file.lastModifiedDate.isValid();
    if (!isInDoubt || ListedSize(remote.size) != ListedSize(record.file.size)) {
        return false;
    }
    try {
        return Md5OnService(_service, record.path, remote.size) == record.contentMd5;
    } catch (const std::exception&) {
        ReportFailure(record.path, std::current_exception());
        return false;
    }
}

FileRecord PassContext::RecordOf(const QString& path, const FileConfiguration& remote) {
    FileRecord record;
    record.path = path;
    record.file = remote;
    _service.updater->UpdateCustomFileConfigBeforeDownload(_service.FolderAt(FolderOf(path)), record.file, remote);
    if (IsInDoubt(remote)) {
        record.file.lastModifiedDate = QDateTime();
    }
    return record;
}

bool PassContext::IsInDoubt(const FileConfiguration& remote) const {
    const bool hasDateAlone = remote.versionId.isEmpty() && remote.md5Checksum.isEmpty();
    return hasDateAlone && _listedAt.isValid() && remote.lastModifiedDate.isValid() &&
           remote.lastModifiedDate.toSecsSinceEpoch() >= _listedAt.toSecsSinceEpoch();
}

void PassContext::Adopt(const QString& path, const FileConfiguration& remote, LocalFileState& file) {
    if (_options.isDryRun) {
        return;
    }
    if (file.md5.isEmpty()) {
        Read(path, file);
    }
    if (file.md5.isEmpty()) {
        return;
    }
    FileRecord record = RecordOf(path, remote);
    record.local = Recordable(file.entry->fingerprint);
    record.contentMd5 = file.md5;
    _records.WriteFile(record);
}

void PassContext::Report(const SyncEvent& event) {
    _hasProblems = _hasProblems || event.IsProblem() || (_options.isStrict && event.kind == SyncEvent::Kind::Skipped);
    _hasFailed = _hasFailed || event.kind == SyncEvent::Kind::Failed;
    _observer.OnEvent(event);
}

void PassContext::Report(SyncEvent::Kind kind, const QString& path, const QString& detail, qint64 bytes) {
    Report({kind, path, detail, bytes});
}

void PassContext::ReportFailure(const QString& path, const std::exception_ptr& error) {
    if (*_options.isStopped) {
        std::rethrow_exception(error);
    }
    try {
        std::rethrow_exception(error);
    } catch (const HttpException& e) {
        if (e.StatusCode() == HttpStatus::Unauthorized || e.StatusCode() == HttpStatus::ProxyAuthenticationRequired) {
            throw;
        }
        if (IsRefusal(e.StatusCode())) {
            Report({SyncEvent::Kind::Refused, path, e.Message(), 0, error});
        } else if (_IsTooMuch({SyncEvent::Kind::Failed, path, e.Message(), 0, error})) {
            throw;
        }
    } catch (const store::StoreError&) {
        throw;
    } catch (const LocalError& e) {
        if (e.ConcernsWholeDisk()) {
            throw;
        }
        Report({SyncEvent::Kind::Refused, path, e.Message(), 0, error});
    } catch (const sync::core::SyncException& e) {
        if (_IsTooMuch({SyncEvent::Kind::Failed, path, e.Message(), 0, error})) {
            throw;
        }
    }
}

bool PassContext::_IsTooMuch(const SyncEvent& failure) {
    Report(failure);
    return ++_failuresInARow >= PatienceWithFailures;
}

SyncOutcome PassContext::Outcome() const {
    if (_hasFailed) {
        return SyncOutcome::Failed;
    }
    return _hasProblems ? SyncOutcome::LeftSome : SyncOutcome::InStep;
}

SyncOutcome PassContext::Run(const std::function<void()>& pass) const {
    try {
        pass();
        return Outcome();
    } catch (const std::exception&) {
        // Whatever is under way ends with an error of its own when it is stopped.
        if (*_options.isStopped) {
            return SyncOutcome::Cancelled;
        }
        throw;
    }
}

}  // namespace pass
}  // namespace ovsync
