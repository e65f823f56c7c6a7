#pragma once

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>
#include <atomic>
#include <chrono>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "client/sync/pass/FileComparison.h"
#include "client/sync/pass/HeldLocks.h"
#include "client/sync/pass/TransferLoop.h"
#include "client/sync/push/Upload.h"

namespace ovsync {
namespace push {

/// Sends folders and files to the service, several files at once, and records what it has then. Nothing there is
/// overwritten that was not known. For one run. Not thread-safe.
class Uploader : private pass::TransferLoop<PushOrder, Upload> {
public:
    /// The arguments outlive this object.
    Uploader(const pass::PassSides& sides, const pass::FileComparison& comparison, const pass::RecordMaker& maker,
             pass::PassReport& report)
        : TransferLoop(sides, report, 1), _comparison(comparison), _maker(maker), _locks(sides.records) {}

    /// First makes `folders`, in which a folder comes before those in it. What lies in one that cannot be made is left
    /// out. True when everything went over. Throws Cancelled, when what is sent is recorded, and what
    /// PassReport::TellFailure throws.
    bool Run(const QStringList& folders, std::deque<PushOrder> orders);

    /// Of these a folder comes before those in it. Returns those that cannot be made. Throws as Run does.
    QSet<QString> MakeFolders(const QStringList& folders);

private:
    qint64 SizeOf(const PushOrder& order) const override;
    void Tell(const PushOrder& order) override;
    std::unique_ptr<Upload> Make(PushOrder order, const QUrl& url) override;
    void Refuse(const QString& path, const QString& reason) override;
    void Take(Transfers uploads, Pool& pool) override;
    void TakeLast(Transfers uploads) override;

    /// Asks the service for what it has of the files that were sent, and records them.
    void _TakeAllSent(Pool* pool);
    /// Of those that are worth it. Returns them.
    QSet<QString> _ListFoldersOf(const Transfers& uploads);
    /// How many files a listing of the folder may have.
    int _LikelyListed(const QString& folder);
    /// Whether the listing of its folder has what was sent.
    bool _IsListed(Upload& upload);
    void _Settle(const Upload& upload);
    void _TellConflict(const PushOrder& order);
    void _TellFailure(const QString& path, const std::exception_ptr& error);
    /// Of a file that is gone by now, which the next pass sees to, nobody is told.
    void _TellWritten(const QString& path);
    /// Whether a file is here, or may be.
    bool _IsHere(const QString& path) const;
    void _TakeRemoved(const PushOrder& order);
    /// False when it cannot be made.
    bool _MakeFolder(const QString& path);
    /// Notes where files are going to be locked.
    void _ExpectLocks(const std::deque<PushOrder>& orders);
    /// Lets at most one file try the conditions, and none once it is known.
    void _ChooseTrial(std::deque<PushOrder>& orders);
    void _Take(std::unique_ptr<Upload> upload, Pool& pool);
    /// Whether what is to be replaced is still what the listing had.
    bool _IsStillKnown(const Upload& upload);
    bool _IsStillThere(const PushOrder& order);
    /// Whether the file's date, in place of an entity tag, can tell what somebody else changes meanwhile.
    bool _TellsByDate(const Upload& upload);
    void _TakeSent(const Upload& upload);
    /// Whether the service says that what it has now has `size` bytes.
    bool _HasSize(const Upload& upload, qint64 size);
    /// None when the service has something else than what was sent.
    std::optional<store::FileRecord> _RecordOf(const Upload& upload);

    const pass::FileComparison& _comparison;
    const pass::RecordMaker& _maker;
    pass::HeldLocks _locks;
    QString _lockOwner;
    bool _areLocksLeft = false;
    std::mutex _locking;
    bool _hasAll = true;
    /// How many files are to be sent into each folder.
    QHash<QString, int> _inFolders;
    /// How many files there were in the folders that were listed.
    QHash<QString, int> _listedInFolders;
    /// Stored, and not recorded yet.
    Transfers _sent;
    std::chrono::steady_clock::time_point _firstSent;
    /// Whether a file that is fit for it is to try the conditions.
    bool _isTrialDue = false;
    /// Whether it was asked for what the service has of the first that were sent, which tells what kind of server it
    /// is.
    bool _isFirstAsked = false;
    /// Whether the last file that was recorded has no checksum there.
    bool _isOtherServer = false;
    /// Whether the server was seen in this run to refuse what a condition forbids.
    std::atomic<bool> _knowsConditions{false};
};

}  // namespace push
}  // namespace ovsync
