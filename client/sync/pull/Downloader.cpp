#include "client/sync/pull/Downloader.h"

#include <algorithm>
#include <utility>

#include "client/sync/local/LocalError.h"
#include "client/sync/local/PathNames.h"
#include "client/sync/pass/RemoteVersion.h"
#include "client/sync/report/Cancelled.h"

namespace ovsync {
namespace pull {

using local::ConflictText;
using local::Installer;
using local::LocalError;
using pass::IdentityOf;
using pass::IsContentOf;
using pass::IsOfVersion;
using pass::LikelySize;
using pass::LocalFileState;
using report::SyncEvent;
using sync::config::FileConfiguration;

namespace {

const int MaxAttempts = 3;

// A few files are on the disk sooner when nothing else has to be.
const int ManyFiles = 4;

/// Whether the content came that the listing describes.
bool HasCome(const Download& download) {
    if (download.Error() || download.IsTooLarge()) {
        return false;
    }
    const FileConfiguration& remote = download.Order().remote;
    const QDateTime& sent = download.Version().lastModified;
    const bool hasDates = sent.isValid() && remote.lastModifiedDate.isValid();
    return IsContentOf(remote, download.Fresh().size, download.Md5()) &&
           (!remote.md5Checksum.isEmpty() || !hasDates || sent == remote.lastModifiedDate);
}

/// For people: how what came differs from what the listing describes.
QString DifferenceText(const Download& download) {
    const FileConfiguration& listed = download.Order().remote;
    const QString size = listed.size == -1 ? QStringLiteral("4 GiB or more") : QString::number(LikelySize(listed.size));
    QString difference;
    if (download.IsTooLarge()) {
        difference = QStringLiteral("more than %1 bytes in place of %2, the rest of which was not waited for")
                         .arg(QString::number(download.Size()), size);
    } else if (!IsContentOf(listed, download.Fresh().size, QString())) {
        difference = QStringLiteral("%1 bytes in place of %2").arg(QString::number(download.Fresh().size), size);
    } else if (!IsContentOf(listed, download.Fresh().size, download.Md5())) {
        difference =
            QStringLiteral("it has the MD5 %1 in place of %2").arg(download.Md5(), listed.md5Checksum.toLower());
    } else {
        difference = QStringLiteral("it was changed at %1 in place of %2")
                         .arg(download.Version().lastModified.toUTC().toString(Qt::ISODate),
                              listed.lastModifiedDate.toUTC().toString(Qt::ISODate));
    }
    return QStringLiteral("what came is not the file that the service lists: ") + difference;
}

QString VersionNote(const FileConfiguration& remote) {
    return QStringLiteral("from the service") +
           (remote.lastModifiedDate.isValid()
                ? remote.lastModifiedDate.toUTC().toString(QStringLiteral(", yyyy-MM-dd HH.mm.ss"))
                : QString());
}

/// What is told of a file that was fetched, and not put beside another one.
SyncEvent::Kind KindOf(const PullOrder& order) {
    return order.target == PullOrder::Target::New ? SyncEvent::Kind::Fetched : SyncEvent::Kind::Updated;
}

}  // namespace

bool Downloader::Run(std::deque<PullOrder> orders) {
    _flushing = orders.size() >= ManyFiles ? Download::Flushing::WithAll : Download::Flushing::Alone;
    for (const store::PartialDownload& part : _sides.records.PartialDownloads()) {
        _left.insert(part.path, part);
    }
    try {
        RunAll(std::move(orders));
    } catch (...) {
        _RecordParts();
        throw;
    }
    _RecordParts();
    return _hasAll;
}

qint64 Downloader::SizeOf(const PullOrder& order) const {
    return LikelySize(order.remote.size);
}

void Downloader::Tell(const PullOrder& order) {
    if (_IsHereAlready(order)) {
        return;
    }
    if (order.target == PullOrder::Target::Trash) {
        _inTrash.insert(order.path);
    } else if (order.target == PullOrder::Target::Beside) {
        _report.Tell(SyncEvent::Kind::Conflict, order.path,
                     QStringLiteral("it changed here and on the service, whose version would be put beside it"));
    } else {
        _report.Tell(KindOf(order), order.path, QString(), SizeOf(order));
    }
}

LocalFileState Downloader::_HereOf(const PullOrder& order) const {
    LocalFileState here;
    here.entry = order.here;
    here.md5 = order.md5Here;
    if (order.IsCompared() && here.md5.isEmpty()) {
        _comparison.Read(order.path, here);
    }
    return here;
}

bool Downloader::_IsHereAlready(const PullOrder& order) const {
    // By a checksum that was found out before.
    if (!order.IsCompared() || !order.remote.md5Checksum.isEmpty() ||
        !IsContentOf(order.remote, order.here->fingerprint.size, QString())) {
        return false;
    }
    try {
        const QString md5 = _HereOf(order).md5;
        return !md5.isEmpty() && _comparison.IsContentThere(order.remote, md5);
    } catch (const std::exception&) {
        // The pass itself would say why.
        return false;
    }
}

std::unique_ptr<Download> Downloader::Make(PullOrder order, const QUrl& url) {
    order.record = _maker.Make(order.path, order.remote);
    std::shared_ptr<ReceivedPart> received;
    if (SizeOf(order) >= Download::LargeSize) {
        const auto left = _left.constFind(order.path);
        if (left != _left.constEnd() && IsOfVersion(order.remote, left->identity)) {
            order.part = *left;
        }
        received = std::make_shared<ReceivedPart>();
        received->Set(order.part);
        _parts.insert(order.path, {received, order.part});
    }
    const Download::Shared shared{_flushing, _bytes, *_sides.options.isStopped};
    return std::make_unique<Download>(_sides.tree, std::move(order), url, shared, std::move(received));
}

void Downloader::Take(Transfers downloads, Pool& /*pool*/) {
    _RecordParts();
    _Take(downloads);
}

void Downloader::_RecordParts() {
    for (auto part = _parts.begin(); part != _parts.end(); ++part) {
        const std::optional<store::PartialDownload> received = part->received->Get();
        if (received && (!part->recorded || !received->IsSameAs(*part->recorded))) {
            _sides.records.WritePartialDownload(*received);
        } else if (!received && part->recorded) {
            _sides.records.ForgetPartialDownload(part.key());
        }
        part->recorded = received;
    }
}

void Downloader::_ForgetPart(const QString& path) {
    const Part part = _parts.take(path);
    if (part.recorded) {
        _sides.records.ForgetPartialDownload(path);
    }
    _left.remove(path);
}

void Downloader::TakeLast(Transfers downloads) {
    const auto isUnfit = [](const std::unique_ptr<Download>& download) { return !HasCome(*download); };
    downloads.erase(std::remove_if(downloads.begin(), downloads.end(), isUnfit), downloads.end());
    _Take(downloads);
}

void Downloader::_Take(const Transfers& downloads) {
    const auto isToBeFlushed = [](const std::unique_ptr<Download>& download) {
        return HasCome(*download) && !download->IsFlushed();
    };
    if (std::any_of(downloads.begin(), downloads.end(), isToBeFlushed)) {
        _sides.tree.SyncAll();
    }
    QVector<Installer::Request> requests;
    std::vector<Download*> placed;
    std::vector<const Download*> others;
    bool isStopped = false;
    for (const std::unique_ptr<Download>& download : downloads) {
        ++_progress.doneFiles;
        if (!download->Error()) {
            // Before the temporary file becomes anything else.
            _ForgetPart(download->Order().path);
        }
        if (HasCome(*download)) {
            _report.TellSuccess();
            try {
                _TakeContent(*download, requests, placed);
            } catch (const report::Cancelled&) {
                // What is here was to be read. The others may be ready.
                isStopped = true;
            }
        } else {
            others.push_back(download.get());
        }
    }
    // First what came as it should: a failure may end the pass.
    if (!requests.isEmpty()) {
        for (Download* download : placed) {
            download->LeaveTemporary();
        }
        _installer.Install(requests);
    }
    for (int i = 0; i < requests.size(); ++i) {
        _TakePlaced(requests[i], placed[static_cast<size_t>(i)]->Order());
    }
    if (isStopped) {
        throw report::Cancelled();
    }
    for (const Download* download : others) {
        if (download->Error()) {
            _TellFailure(download->Order().path, download->Error());
        } else {
            _TakeSurprise(*download);
        }
    }
}

void Downloader::_TakeContent(Download& download, QVector<Installer::Request>& requests,
                              std::vector<Download*>& placed) {
    const PullOrder& order = download.Order();
    const LocalFileState here = _HereOf(order);
    if (here.md5 == download.Md5()) {
        _sides.records.WriteFile(_maker.Make(order.path, order.remote, here));
        return;
    }
    if (order.target == PullOrder::Target::Beside) {
        if (_KeepBoth(order, download.Temporary(), download.Md5())) {
            download.LeaveTemporary();
        }
        return;
    }
    if (order.target == PullOrder::Target::Trash) {
        if (_TakeIntoTrash(order.path, download.Temporary())) {
            download.LeaveTemporary();
        }
        return;
    }
    Installer::Request request;
    request.placement.record = order.record;
    request.placement.record.local = download.Fresh();
    request.placement.record.contentMd5 = download.Md5();
    FileConfiguration& file = request.placement.record.file;
    if (file.versionId.isEmpty() && file.md5Checksum.isEmpty() && !file.lastModifiedDate.isValid()) {
        file.versionId = QString::fromUtf8(download.Version().weakTag);
    }
    request.placement.temporary = download.Temporary();
    if (order.here) {
        request.placement.old = order.here->fingerprint;
    }
    requests.append(request);
    placed.push_back(&download);
}

void Downloader::_TakeSurprise(const Download& download) {
    PullOrder order = download.Order();
    const QString path = order.path;
    if (download.IsResumed()) {
        // The part may have been of something else after all. The whole is fetched, once.
        order.part.reset();
        _orders.push_back(std::move(order));
        ++_progress.allFiles;
        return;
    }
    try {
        const FileConfiguration now = _sides.service.FileAt(path);
        if (++order.attempts < MaxAttempts && IdentityOf(now) != IdentityOf(order.remote)) {
            order.remote = now;
            _orders.push_back(std::move(order));
            ++_progress.allFiles;
            return;
        }
        const QString reason = IdentityOf(now) == IdentityOf(order.remote)
                                   ? DifferenceText(download)
                                   : QStringLiteral("it changes on the service faster than it can be fetched");
        throw sync::core::SyncException(reason +
                                        QStringLiteral(". Nothing was changed here; the next pass fetches it again"));
    } catch (const std::exception&) {
        _TellFailure(path, std::current_exception());
    }
}

void Downloader::_TakePlaced(const Installer::Request& request, const PullOrder& order) {
    switch (request.result) {
        case Installer::Result::Done:
            _report.Tell(KindOf(order), order.path, QString(), request.placement.record.local.size);
            break;
        case Installer::Result::Occupied:
            _KeepBoth(order, request.placement.temporary, request.placement.record.contentMd5);
            break;
        case Installer::Result::Failed:
            _hasAll = false;
            _report.TellRefusal(order.path, request.error);
            break;
    }
    if (!request.aside.isEmpty()) {
        _report.Tell(SyncEvent::Kind::Conflict, order.path,
                     QStringLiteral("it was changed here while it was replaced: that is in \"%1\"").arg(request.aside));
    }
}

bool Downloader::_KeepBoth(const PullOrder& order, const QString& temporary, const QString& md5) {
    try {
        const QString identity = _maker.IsInDoubt(order.remote) ? QString() : IdentityOf(order.remote);
        const QString copy =
            _installer.PutBeside(temporary, {QString(), order.path, identity, md5}, VersionNote(order.remote));
        _report.Tell(SyncEvent::Kind::Conflict, order.path, ConflictText(copy));
        return true;
    } catch (const LocalError&) {
        _TellFailure(order.path, std::current_exception());
        return false;
    }
}

bool Downloader::_TakeIntoTrash(const QString& path, const QString& temporary) {
    try {
        _installer.Discard(temporary, path);
        _inTrash.insert(path);
        return true;
    } catch (const LocalError&) {
        _TellFailure(path, std::current_exception());
        return false;
    }
}

void Downloader::Refuse(const QString& path, const QString& reason) {
    _hasAll = false;
    _report.Tell(SyncEvent::Kind::Refused, path, reason);
}

void Downloader::_TellFailure(const QString& path, const std::exception_ptr& error) {
    _hasAll = false;
    _report.TellFailure(path, error);
}

}  // namespace pull
}  // namespace ovsync
