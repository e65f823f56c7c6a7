#pragma once

#include <QSet>
#include <QString>
#include <QVector>
#include <exception>

#include "client/sync/pass/SyncOptions.h"
#include "client/sync/report/ISyncObserver.h"
#include "client/sync/report/SyncOutcome.h"

namespace ovsync {
namespace pass {

/// Tells what a pass does and finds, and from that how it ends. For one pass. Not thread-safe.
class PassReport {
public:
    /// The arguments outlive this object.
    PassReport(const SyncOptions& options, report::ISyncObserver& observer) : _options(options), _observer(observer) {}

    void Tell(const report::SyncEvent& event);
    void Tell(report::SyncEvent::Kind kind, const QString& path, const QString& detail = QString(), qint64 bytes = 0);
    void Tell(const QVector<report::SyncEvent>& events);
    /// Something is left to the next pass, of which nobody has to be told.
    void LeaveOpen(const QString& path) { _open.insert(path); }
    /// The next pass has to look at everything.
    void LeaveAllOpen() { _isAllOpen = true; }
    bool IsAllOpen() const { return _isAllOpen; }
    /// The paths of all that the next pass has to look at again.
    const QSet<QString>& Open() const { return _open; }

    void TellProgress(const report::SyncProgress& progress) { _observer.OnProgress(progress); }

    /// Tells why something failed. Throws `error` when it concerns all files: the credentials, the disk, when the
    /// service fails again and again, and when the pass is stopped, which ends what is under way with some error.
    void TellFailure(const QString& path, const std::exception_ptr& error);
    /// Tells why something could not be done here, which concerns no other file.
    void TellRefusal(const QString& path, const std::exception_ptr& error);
    /// The service did what it was asked for.
    void TellSuccess() { _failuresInARow = 0; }

    void ThrowIfStopped() const;
    /// Of a pass that went through to its end.
    report::SyncOutcome Outcome() const;

private:
    /// Tells of the failure. True when so many came in a row that the pass is to end.
    bool _IsTooMuch(const report::SyncEvent& failure);

    const SyncOptions& _options;
    report::ISyncObserver& _observer;
    bool _hasProblems = false;
    bool _hasFailed = false;
    int _failuresInARow = 0;
    QSet<QString> _open;
    bool _isAllOpen = false;
};

}  // namespace pass
}  // namespace ovsync
