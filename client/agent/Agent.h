#pragma once

#include <QMap>
#include <QSocketNotifier>
#include <QVector>
#include <atomic>
#include <list>
#include <memory>

#include "client/agent/FolderWorker.h"
#include "client/agent/StatusServer.h"
#include "client/folders/FoldersText.h"

namespace ovsync {
namespace agent {

/// The application that keeps this user's folders in step: those of the folders file, each on a thread of its own.
/// SIGTERM and SIGINT end it, SIGHUP has it read the file again. One in a process, on the main thread.
class Agent {
public:
    /// From now on these signals are waited for. Throws SyncException when the system is out of descriptors.
    Agent();
    ~Agent();
    Agent(const Agent&) = delete;
    Agent& operator=(const Agent&) = delete;

    /// Until it is told to end. Throws SyncException when it cannot begin.
    void Run();

private:
    struct Wanted {
        folders::SyncedFolder folder;
        QString user;
        QString password;
    };

    void _OnMessages();
    /// Reads the folders file. One with a mistake changes nothing.
    void _Load();
    void _LoadOnce();
    /// Has the folder at `directory`, without links in its path, looked at soon.
    void _Look(const QString& directory);
    void _Adjust(const QVector<Wanted>& wanted);
    /// Begins with the folders that have no worker, unless one of the same folder is still about to end.
    void _StartMissing();
    void _RemoveEnded();
    void _EndWorkers();
    /// On any thread.
    void _OnStatus();
    AgentStatus _Status() const;

    std::atomic<bool> _isStatusOnItsWay{false};
    std::unique_ptr<QSocketNotifier> _notifier;
    StatusServer _server;
    bool _isLoading = false;
    bool _isToLoadAgain = false;
    folders::FoldersReading _read;
    /// In the order of the file.
    QVector<Wanted> _wanted;
    /// By directory.
    QMap<QString, std::shared_ptr<FolderWorker>> _workers;
    std::list<std::shared_ptr<FolderWorker>> _ending;
};

}  // namespace agent
}  // namespace ovsync
