#pragma once

#include <QDateTime>
#include <QString>
#include <functional>
#include <optional>

#include "client/store/RecordDatabase.h"
#include "client/sync/local/Exclusion.h"
#include "client/sync/local/ILocalTree.h"
#include "client/sync/local/Installer.h"
#include "client/sync/local/LocalSnapshot.h"
#include "client/sync/pass/LocalState.h"
#include "client/sync/pass/RemoteState.h"
#include "client/sync/pass/RemoteTree.h"
#include "client/sync/pass/ServiceFolder.h"
#include "client/sync/pass/SyncOptions.h"
#include "client/sync/report/ISyncObserver.h"
#include "client/sync/report/SyncOutcome.h"

namespace ovsync {
namespace pass {

/// A file of this side, seen beside its record. A plain value.
struct LocalFileState {
    LocalState state = LocalState::Nothing;
    std::optional<local::LocalEntry> entry;
    /// Of the content, in hexadecimal, where it was known or had to be read.
    QString md5;
};

/// What the parts of a pass share: both sides, the records, and who is told. For one pass. Not thread-safe.
class PassContext {
public:
    /// The arguments outlive this object.
    PassContext(const ServiceFolder& service, local::ILocalTree& tree, store::RecordDatabase& records,
                const SyncOptions& options, report::ISyncObserver& observer);

    const ServiceFolder& Service() const { return _service; }
    local::ILocalTree& Tree() { return _tree; }
    store::RecordDatabase& Records() { return _records; }
    const SyncOptions& Options() const { return _options; }
    const local::Exclusion& Excluded() const { return _exclusion; }
    local::Installer& Installing() { return _installer; }
    void ThrowIfStopped() const;

    /// Checks that the folder belongs to the service's folder, clears up after a pass that died and what is too old in
    /// the trash, and looks through the folder. Throws WrongFolder, LocalError and StoreError.
    local::LocalSnapshot Begin();

    /// What the service has; none when nothing changed since `since`, if that is valid. Throws what the library throws,
    /// and HttpException of status 404 when there is no such folder.
    std::optional<RemoteTree> List(const QDateTime& since, const local::LocalSnapshot& snapshot);
    /// The service's time of the last listing.
    const QDateTime& ListedAt() const { return _listedAt; }

    /// Reads the file where only its content can tell, and renews the record of one that was only touched.
    LocalFileState Compare(const QString& path, const local::LocalSnapshot& snapshot,
                           std::optional<store::FileRecord>& record);
    /// Reads the content of the file, which is left without a checksum when it cannot be read or is being written.
    void Read(const QString& path, LocalFileState& file);
    /// Whether the file here is known to have the content of the service's file; reads it where it must.
    bool HasContentOf(const QString& path, const sync::config::FileConfiguration& remote, LocalFileState& file);
    /// What the service's file is beside the record of that path. Where the record knows no version for sure, reads the
    /// service's content, and renews the record when it is the same.
    RemoteState StateOf(const QString& path, const sync::config::FileConfiguration& remote,
                        std::optional<store::FileRecord>& record);

    /// A record of `remote`, brought up to date by the library. Its local part is left open. When the next pass could
    /// not tell another version from it, the date is left out, and so the content is compared then.
    store::FileRecord RecordOf(const QString& path, const sync::config::FileConfiguration& remote);
    /// Whether `remote` may look the same after another change: it is known by its date alone, whose second was not
    /// over when it was listed.
    bool IsInDoubt(const sync::config::FileConfiguration& remote) const;
    /// Writes down that the file here has the content of the service's file. A file that is being written is left to
    /// the next pass.
    void Adopt(const QString& path, const sync::config::FileConfiguration& remote, LocalFileState& file);

    void Report(const report::SyncEvent& event);
    void Report(report::SyncEvent::Kind kind, const QString& path, const QString& detail = QString(), qint64 bytes = 0);
    /// Tells why a transfer failed. Throws on what concerns all transfers: the credentials, the disk, when the service
    /// fails again and again, and when the pass is stopped, which ends what is under way with some error.
    void ReportFailure(const QString& path, const std::exception_ptr& error);
    void ReportSuccess() { _failuresInARow = 0; }
    void ReportProgress(const report::SyncProgress& progress) { _observer.OnProgress(progress); }
    report::SyncOutcome Outcome() const;

    /// Carries `pass` out and tells how it ended.
    report::SyncOutcome Run(const std::function<void()>& pass) const;

private:
    void _CheckAddress();
    /// Whether the service still has the content of the record, which knows no version.
    bool _HasContentOfRecord(const sync::config::FileConfiguration& remote, const store::FileRecord& record);
    /// Tells of the failure. True when so many came in a row that the pass is to end.
    bool _IsTooMuch(const report::SyncEvent& failure);

    const ServiceFolder& _service;
    local::ILocalTree& _tree;
    store::RecordDatabase& _records;
    const SyncOptions& _options;
    const local::Exclusion _exclusion;
    local::Trash _trash;
    local::Installer _installer;
    report::ISyncObserver& _observer;
    QDateTime _listedAt;
    bool _hasProblems = false;
    bool _hasFailed = false;
    int _failuresInARow = 0;
};

}  // namespace pass
}  // namespace ovsync
