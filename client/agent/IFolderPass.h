#pragma once

#include <QSet>
#include <QString>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

#include "client/folders/SyncedFolder.h"
#include "client/sync/report/ISyncObserver.h"

namespace ovsync {
namespace agent {

/// How a pass ended. A plain value.
struct PassResult {
    enum class End {
        InStep,
        /// Something is left to somebody; the events say what.
        LeftSome,
        /// The next pass may do better.
        Failed,
        /// The service does not take the name and the password.
        Rejected,
        /// Another process has the folder: nothing was done.
        Busy,
        Stopped
    };

    End end;
    /// For people: why it failed; may be empty where the events say it.
    QString error;
};

/// What the service wants of those who synchronise with it. A plain value.
struct ServiceWishes {
    std::chrono::seconds frequency{0};
    std::chrono::seconds delayAfterFailure{0};
    /// Of the application; empty when there is none that is newer.
    QString newVersion;
};

/// Brings one folder in step, again and again. To be used on the thread that made it.
class IFolderPass {
public:
    virtual ~IFolderPass() = default;

    /// The paths of files and folders that changed here; none when nobody knows.
    using Paths = std::optional<QSet<QString>>;

    /// `changedHere`: since the last pass that neither failed nor was stopped. Ends early once `isStopped` is true.
    /// Throws nothing.
    virtual PassResult Run(const std::atomic<bool>& isStopped, report::ISyncObserver& observer,
                           const Paths& changedHere) = 0;

    /// Asks the service; where it does not say, the library knows. None when it did not answer. Throws nothing.
    virtual std::optional<ServiceWishes> AskWishes() = 0;
};

/// Makes the passes of a folder, on the thread that is going to use them.
using FolderPassMaker = std::function<std::unique_ptr<IFolderPass>(const folders::SyncedFolder&)>;

}  // namespace agent
}  // namespace ovsync
