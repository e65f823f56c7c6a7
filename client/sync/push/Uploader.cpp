#include "client/sync/push/Uploader.h"

#include <QFileInfo>
#include <algorithm>
#include <limits>
#include <utility>

#include "client/sync/local/LocalContent.h"
#include "client/sync/local/LocalError.h"
#include "client/sync/local/PathNames.h"
#include "client/sync/pass/RemoteVersion.h"
#include "client/sync/report/Cancelled.h"
#include "client/wire/HttpStatus.h"
#include "host/http/HttpException.h"

namespace ovsync {
namespace push {

using content::UploadOutcome;
using local::FolderOf;
using local::LocalEntry;
using local::LocalError;
using local::NameOf;
using local::Recordable;
using pass::DiffersByMissingChecksum;
using pass::EntityTagOf;
using pass::HasIdentity;
using pass::IdentityOf;
using pass::IsContentOf;
using pass::ListedSize;
using pass::ServiceFolder;
using report::Cancelled;
using report::SyncEvent;
using store::FileRecord;
using sync::config::FileConfiguration;
using sync::config::FolderConfiguration;

namespace {

QString ConditionsSetting() {
    return QStringLiteral("uploadConditions");
}

QString KnownConditions() {
    return QStringLiteral("known");
}

// As long as there are fewer, a question for each costs less than another one.
const int ManyFiles = 16;
// What is asked for by a listing of its folder is asked for together with at least so many others.
const int ManyInFolder = 4;
// The most files that are listed in vain for each that was sent.
const int ListedInVain = 16;
// Only sizes below are the same in a listing.
const qint64 MostListed = std::numeric_limits<qint32>::max();
// How many sent files wait, and for how long, for others of which the service can be asked at the same time.
const size_t MostSent = 128;
const std::chrono::milliseconds LongestWait(500);

/// Whether the entity tag is that of what was sent, and not of what somebody else sent after it, of the same size.
bool IsTagOf(const Upload& upload, const QByteArray& tag) {
    const content::UploadAnswer& answer = upload.Answer();
    if (!answer.entityTag.isEmpty()) {
        return answer.entityTag == tag;
    }
    const std::optional<content::ContentVersion>& now = upload.Version();
    return now && now->entityTag == tag && now->lastModified.isValid() && answer.date.isValid() &&
           now->lastModified <= answer.date;
}

/// Forgets what was listed, whatever happens.
class ListingsKept {
public:
    explicit ListingsKept(const ServiceFolder& service) : _service(service) {}
    ~ListingsKept() { _service.forgetListings(); }
    ListingsKept(const ListingsKept&) = delete;
    ListingsKept& operator=(const ListingsKept&) = delete;

private:
    const ServiceFolder& _service;
};

}  // namespace

bool Uploader::Run(const QStringList& folders, std::deque<PushOrder> orders) {
    const QSet<QString> missing = MakeFolders(folders);
    const auto isUnplaced = [&missing](const PushOrder& order) { return missing.contains(FolderOf(order.path)); };
    orders.erase(std::remove_if(orders.begin(), orders.end(), isUnplaced), orders.end());
    _ChooseTrial(orders);
    for (const PushOrder& order : orders) {
        ++_inFolders[FolderOf(order.path)];
    }
    if (!_isDryRun) {
        _ExpectLocks(orders);
    }
    RunAll(std::move(orders));
    if (!_lockOwner.isEmpty() && !_areLocksLeft) {
        _locks.Forget();
    }
    return _hasAll && missing.isEmpty();
}

QSet<QString> Uploader::MakeFolders(const QStringList& folders) {
    QSet<QString> missing;
    for (const QString& path : folders) {
        if (missing.contains(FolderOf(path)) || !_MakeFolder(path)) {
            missing.insert(path);
        }
        _report.ThrowIfStopped();
    }
    return missing;
}

bool Uploader::_MakeFolder(const QString& path) {
    try {
        store::FolderRecord record;
        record.path = path;
        if (!_isDryRun) {
            FolderConfiguration folder = _sides.service.FolderAt(path);
            if (_sides.service.folders->FolderExists(folder)) {
                Refuse(path, QStringLiteral("the service has something of this name that it does not list; what lies "
                                            "in it stays here"));
                return false;
            }
            _sides.service.folders->CreateFolder(folder, QString(), false);
            _report.TellSuccess();
            if (!pass::IsMadeUpId(folder.getServerFolderId())) {
                record.itemId = folder.getServerFolderId();
            }
        }
        _sides.records.WriteFolder(record);
    } catch (const std::exception&) {
        _TellFailure(path, std::current_exception());
        return false;
    }
    _report.Tell(SyncEvent::Kind::FolderSent, path);
    return true;
}

void Uploader::_ExpectLocks(const std::deque<PushOrder>& orders) {
    QSet<QString> folders;
    for (const PushOrder& order : orders) {
        if (order.IsToBeLocked()) {
            folders.insert(FolderOf(order.path));
        }
    }
    if (!folders.isEmpty()) {
        _lockOwner = _locks.Owner();
        _locks.Expect(folders);
    }
}

void Uploader::_ChooseTrial(std::deque<PushOrder>& orders) {
    const QString known = _sides.records.Setting(ConditionsSetting());
    const auto isFit = [](const PushOrder& order) { return order.IsFitForTrial(); };
    // For many it is worth to know that the server still does as it did.
    const auto fit = std::count_if(orders.begin(), orders.end(), isFit);
    _isTrialDue = known.isEmpty() ? fit > 0 : known == KnownConditions() && fit >= ManyFiles;
    for (PushOrder& order : orders) {
        order.triesConditions = order.triesConditions && _isTrialDue;
        _isTrialDue = _isTrialDue && !order.triesConditions;
    }
}

qint64 Uploader::SizeOf(const PushOrder& order) const {
    return order.size;
}

void Uploader::Tell(const PushOrder& order) {
    if (order.isRemoval) {
        _TakeRemoved(order);
        return;
    }
    try {
        const auto file = _sides.tree.Open(order.path);
        _report.Tell(SyncEvent::Kind::Sent, order.path, QString(), order.size);
    } catch (const LocalError&) {
        _TellFailure(order.path, std::current_exception());
    }
}

std::unique_ptr<Upload> Uploader::Make(PushOrder order, const QUrl& url) {
    // An empty folder may have been one of the service itself.
    if (_isTrialDue && _isOtherServer && order.IsFitForTrial()) {
        order.triesConditions = true;
        _isTrialDue = false;
    }
    const bool isAskedLater =
        !order.isRemoval && order.size <= MostListed && _inFolders[FolderOf(order.path)] >= ManyInFolder;
    return std::make_unique<Upload>(
        _sides.tree, std::move(order), url, isAskedLater ? Upload::Asking::Later : Upload::Asking::AtOnce,
        Upload::Shared{_bytes, _knowsConditions, *_sides.options.isStopped, _lockOwner, _locking});
}

void Uploader::Refuse(const QString& path, const QString& reason) {
    _hasAll = false;
    _report.Tell(SyncEvent::Kind::Refused, path, reason);
}

void Uploader::Take(Transfers uploads, Pool& pool) {
    try {
        for (std::unique_ptr<Upload>& upload : uploads) {
            _Take(std::move(upload), pool);
        }
    } catch (...) {
        _TakeAllSent(nullptr);
        throw;
    }
    const bool isFirst = _isTrialDue && !_isFirstAsked && !_sent.empty();
    _isFirstAsked = _isFirstAsked || isFirst;
    const bool isLast = _orders.empty() && pool.Unfinished() == 0;
    if (isFirst || isLast || _sent.size() >= MostSent || std::chrono::steady_clock::now() - _firstSent >= LongestWait) {
        _TakeAllSent(&pool);
    }
}

void Uploader::TakeLast(Transfers uploads) {
    for (std::unique_ptr<Upload>& upload : uploads) {
        if (!upload->Error() && !upload->IsToBeSent()) {
            _sent.push_back(std::move(upload));
        }
    }
    _TakeAllSent(nullptr);
}

void Uploader::_Take(std::unique_ptr<Upload> upload, Pool& pool) {
    const QString path = upload->Order().path;
    _areLocksLeft = _areLocksLeft || upload->IsLockLeft();
    try {
        if (upload->Error()) {
            std::rethrow_exception(upload->Error());
        }
        if (!upload->IsToBeSent()) {
            if (_sent.empty()) {
                _firstSent = std::chrono::steady_clock::now();
            }
            _sent.push_back(std::move(upload));
        } else if (_IsStillKnown(*upload)) {
            pool.Start(std::move(upload));
        } else {
            ++_progress.doneFiles;
        }
    } catch (const Cancelled&) {
        throw;
    } catch (const Upload::Written&) {
        ++_progress.doneFiles;
        _TellWritten(path);
    } catch (const LocalError&) {
        ++_progress.doneFiles;
        if (_IsHere(path)) {
            _TellFailure(path, std::current_exception());
        } else {
            _report.LeaveOpen(path);
        }
    } catch (const std::exception&) {
        ++_progress.doneFiles;
        _TellFailure(path, std::current_exception());
    }
}

bool Uploader::_IsHere(const QString& path) const {
    try {
        const std::optional<LocalEntry> here = _sides.tree.Look(path);
        return here && here->kind == LocalEntry::Kind::File;
    } catch (const LocalError&) {
        return true;
    }
}

void Uploader::_TellWritten(const QString& path) {
    if (_IsHere(path)) {
        Refuse(path, QStringLiteral("it was written while it was sent, and has to be sent again"));
    } else {
        _report.LeaveOpen(path);
    }
}

void Uploader::_TakeAllSent(Pool* pool) {
    if (_sent.empty()) {
        return;
    }
    Transfers uploads = std::exchange(_sent, Transfers());
    Transfers unanswered;
    const ListingsKept kept(_sides.service);
    const QSet<QString> listed = _ListFoldersOf(uploads);
    store::RecordDatabase::Transaction transaction(_sides.records);
    try {
        for (std::unique_ptr<Upload>& upload : uploads) {
            if (upload->IsToBeAsked() && !(listed.contains(FolderOf(upload->Order().path)) && _IsListed(*upload))) {
                unanswered.push_back(std::move(upload));
            } else {
                ++_progress.doneFiles;
                _Settle(*upload);
            }
        }
    } catch (...) {
        transaction.Commit();
        throw;
    }
    transaction.Commit();
    if (pool != nullptr) {
        for (std::unique_ptr<Upload>& upload : unanswered) {
            pool->Start(std::move(upload));
        }
    }
}

QSet<QString> Uploader::_ListFoldersOf(const Transfers& uploads) {
    QHash<QString, int> counts;
    for (const std::unique_ptr<Upload>& upload : uploads) {
        counts[FolderOf(upload->Order().path)] += upload->IsToBeAsked() ? 1 : 0;
    }
    QSet<QString> listed;
    try {
        for (auto folder = counts.cbegin(); folder != counts.cend(); ++folder) {
            if (*folder >= ManyInFolder && _LikelyListed(folder.key()) <= *folder * ListedInVain) {
                _listedInFolders[folder.key()] = _sides.service.keepListing(_sides.service.FolderAt(folder.key()));
                listed.insert(folder.key());
            }
        }
    } catch (const std::exception&) {
        // The other files are asked for one by one, which tells why it fails.
    }
    return listed;
}

int Uploader::_LikelyListed(const QString& folder) {
    const auto listed = _listedInFolders.constFind(folder);
    return listed == _listedInFolders.constEnd() ? _sides.records.FileCountBelow(folder) : *listed;
}

bool Uploader::_IsListed(Upload& upload) {
    const qint64 size = upload.Before().size;
    try {
        const FileConfiguration now = _sides.service.FileAt(upload.Order().path);
        const PushOrder& order = upload.Order();
        // Some answer from a cache.
        const bool isOld = !order.isNew && HasIdentity(now, IdentityOf(order.remote));
        if (isOld || size > MostListed || now.size != size || !IsContentOf(now, now.size, upload.SentMd5())) {
            return false;
        }
        content::ContentVersion version;
        version.entityTag = EntityTagOf(now);
        version.size = size;
        version.lastModified = now.lastModifiedDate;
        upload.TakeAnswer(version);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

void Uploader::_Settle(const Upload& upload) {
    try {
        _TakeSent(upload);
    } catch (const Cancelled&) {
        throw;
    } catch (const sync::http::HttpException& e) {
        if (e.StatusCode() != wire::HttpStatus::NotFound) {
            _TellFailure(upload.Order().path, std::current_exception());
            return;
        }
        Refuse(upload.Order().path,
               QStringLiteral("it was sent, but the service has no file of this name now: somebody "
                              "deleted it, or it is kept there under another name. If it stays so, "
                              "rename it"));
    } catch (const std::exception&) {
        _TellFailure(upload.Order().path, std::current_exception());
    }
}

void Uploader::_TellFailure(const QString& path, const std::exception_ptr& error) {
    _hasAll = false;
    _report.TellFailure(path, error);
}

void Uploader::_TellConflict(const PushOrder& order) {
    _hasAll = false;
    if (order.isRemoval) {
        _report.Tell(SyncEvent::Kind::Kept, order.path,
                     QStringLiteral("it was deleted here, but has just changed on one of the sides"));
    } else {
        _report.Tell(SyncEvent::Kind::Conflict, order.path,
                     order.isNew ? QStringLiteral("it is new here, and has just been made on the service")
                                 : QStringLiteral("it changed here, and has just changed on the service"));
    }
}

void Uploader::_TakeRemoved(const PushOrder& order) {
    _sides.records.ForgetFile(order.path);
    _report.TellSuccess();
    _report.Tell(SyncEvent::Kind::DeletedThere, order.path);
}

bool Uploader::_IsStillKnown(const Upload& upload) {
    const PushOrder& order = upload.Order();
    if (upload.Version() && upload.Version()->entityTag.isEmpty() && !_TellsByDate(upload)) {
        return false;
    }
    // The tag is older than these answers: when this is still what was known, so was what the tag is of.
    const bool isKnown = upload.Version() && _IsStillThere(order);
    if (!isKnown) {
        _TellConflict(order);
    }
    return isKnown;
}

bool Uploader::_IsStillThere(const PushOrder& order) {
    const FileConfiguration now = _sides.service.FileAt(order.path);
    const bool isSame = HasIdentity(now, IdentityOf(order.remote)) || DiffersByMissingChecksum(now, order.remote);
    return isSame && (!_maker.IsInDoubt(order.remote) || _comparison.IsContentThere(now, order.knownMd5));
}

bool Uploader::_TellsByDate(const Upload& upload) {
    const PushOrder& order = upload.Order();
    const QDateTime& date = upload.KnownDate();
    const QDateTime& listed = _maker.ListedAt();
    if (!date.isValid() && _sides.options.isForced) {
        return true;
    }
    if (!date.isValid() || !listed.isValid()) {
        Refuse(order.path,
               QStringLiteral(
                   "the service gives the file neither an entity tag nor a date, without which a "
                   "change that somebody else makes meanwhile could be overwritten; --force replaces it nonetheless"));
        return false;
    }
    // Dates have whole seconds: within that of the change another one would not be seen.
    const bool isOver = date.toSecsSinceEpoch() < listed.toSecsSinceEpoch() || order.notBefore != PushOrder().notBefore;
    if (!isOver) {
        Refuse(order.path, order.isRemoval
                               ? QStringLiteral("it has just changed on the service; the next pass deletes it there")
                               : QStringLiteral("it has just changed on the service; the next push sends it"));
        return false;
    }
    return true;
}

void Uploader::_TakeSent(const Upload& upload) {
    const QString& path = upload.Order().path;
    if (upload.Answer().outcome == UploadOutcome::Refused) {
        _TellConflict(upload.Order());
        return;
    }
    if (upload.Order().isRemoval) {
        _TakeRemoved(upload.Order());
        return;
    }
    const std::optional<FileRecord> record = _RecordOf(upload);
    if (!record) {
        _hasAll = false;
        // What is recorded stays what both sides had before: both differ from it now, and nobody overwrites the other.
        _report.Tell(SyncEvent::Kind::Conflict, path,
                     QStringLiteral("it was sent, but what the service has is something else"));
        return;
    }
    _sides.records.WriteFile(*record);
    _isOtherServer = record->file.md5Checksum.isEmpty();
    if (!_isOtherServer) {
        // The service itself knows conditions.
        _isTrialDue = false;
        _knowsConditions = true;
    }
    // Only now: a server that takes files and never confirms them has failed.
    _report.TellSuccess();
    _report.Tell(SyncEvent::Kind::Sent, path, QString(), upload.Before().size);
    if (const std::optional<bool> knowsConditions = upload.KnowsConditions()) {
        _sides.records.WriteSetting(ConditionsSetting(),
                                    *knowsConditions ? KnownConditions() : QStringLiteral("ignored"));
        if (!*knowsConditions) {
            _report.Tell(SyncEvent::Kind::Noted, path,
                         QStringLiteral("this server replaces files whatever conditions an upload has. What somebody "
                                        "else writes to a file in the very moment in which it is sent will be lost"));
        }
    }
    if (record->local.changed == 0 && !upload.After().IsUnchangedSince(upload.Before())) {
        _TellWritten(path);
    }
}

std::optional<FileRecord> Uploader::_RecordOf(const Upload& upload) {
    const PushOrder& order = upload.Order();
    const ServiceFolder& service = _sides.service;
    FileRecord record;
    record.path = order.path;
    record.contentMd5 = upload.SentMd5();
    record.local = Recordable(upload.Before());
    if (!upload.After().IsUnchangedSince(upload.Before())) {
        record.local.changed = 0;
    }

    FileConfiguration& file = record.file;
    file = order.remote;
    file.serverId = service.folder.serverId;
    file.name = NameOf(order.path);
    file.serverPath = service.ServerPath(order.path);
    file.localPath = service.folder.localPath + QLatin1Char('/') + order.path;
    service.updater->UpdateCustomFileConfigAfterUpload(service.FolderAt(FolderOf(order.path)), file,
                                                       QFileInfo(file.localPath));
    if (!EntityTagOf(file).isEmpty() && !IsTagOf(upload, EntityTagOf(file))) {
        file.versionId.clear();
    }
    const bool hasDateAlone = file.versionId.isEmpty() && file.md5Checksum.isEmpty();
    const qint64 size = upload.Before().size;
    const bool isOurs = upload.Version() && _HasSize(upload, size) && IsContentOf(file, file.size, upload.SentMd5());
    file.size = size;
    // Another change could come within the same second, so without more than a date the next pass compares. A weak tag
    // tells no more: it may be of what somebody sent after this, of the same size, before the server was asked.
    file.lastModifiedDate = upload.Version() && !hasDateAlone ? upload.Version()->lastModified : QDateTime();
    return isOurs ? std::make_optional(record) : std::nullopt;
}

bool Uploader::_HasSize(const Upload& upload, qint64 size) {
    if (upload.Version()->size >= 0) {
        return upload.Version()->size == size;
    }
    // Some servers name no length for an empty file. A listing does, in 32 bits.
    return ListedSize(size) == _sides.service.FileAt(upload.Order().path).size;
}

}  // namespace push
}  // namespace ovsync
