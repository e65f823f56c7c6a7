#pragma once

#include <QElapsedTimer>
#include <QSet>
#include <atomic>
#include <functional>
#include <mutex>
#include <set>
#include <thread>
#include <utility>

#include "client/agent/FolderSchedule.h"
#include "client/agent/FolderStatus.h"
#include "client/agent/FolderWatcher.h"
#include "client/agent/IFolderPass.h"
#include "client/folders/SyncedFolder.h"
#include "client/sync/report/WaitingDeletions.h"

namespace ovsync {
namespace agent {

/// Keeps one folder in step, on a thread of its own that sleeps until a pass is due or something changed. Its
/// operations are thread-safe.
class FolderWorker : private report::ISyncObserver {
public:
    /// `onStatus` is called on that thread whenever there is something new to say, several times a second while files
    /// are transferred; after the end once more.
    FolderWorker(const folders::SyncedFolder& folder, const FolderPassMaker& makePass,
                 const std::function<void()>& onStatus);
    /// Waits for the end of what is under way.
    ~FolderWorker() override;
    FolderWorker(const FolderWorker&) = delete;
    FolderWorker& operator=(const FolderWorker&) = delete;

    const folders::SyncedFolder& Folder() const { return _folder; }
    FolderStatus Status() const;

    /// Begins a pass soon, whatever failed before.
    void TryAgain();
    /// Ends what is under way, and then the thread. Does not wait for that.
    void Stop();
    bool HasEnded() const { return _hasEnded; }

private:
    void OnEvent(const report::SyncEvent& event) override;
    void OnProgress(const report::SyncProgress& progress) override;

    void _Work(const FolderPassMaker& makePass);
    /// Until then, or something happens.
    void _Sleep(std::optional<FolderSchedule::Time> until);
    void _RunPass(IFolderPass& pass);
    /// For another process that has the folder.
    void _WaitForOther();
    void _Finish(const PassResult& result, std::chrono::milliseconds duration);
    void _AddProblem(const report::SyncEvent& event);
    void _Log(const PassResult& result);
    /// Changes the status, and says so.
    void _Tell(const std::function<void(FolderStatus&)>& change);

    const folders::SyncedFolder _folder;
    const std::function<void()> _onStatus;
    const int _wakeUp;
    const int _alarm;
    std::atomic<bool> _isStopped{false};
    std::atomic<bool> _isToTryAgain{false};
    std::atomic<bool> _hasEnded{false};

    mutable std::mutex _mutex;
    FolderStatus _status;

    // Of the thread alone.
    FolderWatcher _watcher;
    FolderSchedule _schedule;
    FolderStatus _pass;
    QSet<QString> _problemPaths;
    report::WaitingDeletions _waiting;
    /// What the log has of the last passes, up to the last one that did not fail.
    std::set<std::pair<QString, report::SyncEvent::Kind>> _loggedProblems;
    QString _loggedError;
    QElapsedTimer _transfers;
    std::optional<FolderSchedule::Time> _asked;
    std::optional<FolderSchedule::Time> _lookedAtAll;

    // Last, because it uses the others.
    std::thread _thread;
};

}  // namespace agent
}  // namespace ovsync
