#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVector>
#include <optional>

#include "client/agent/IFolderPass.h"

namespace ovsync {
namespace agent {

/// What there is to say about one folder at a moment. A plain value.
struct FolderStatus {
    enum class State {
        /// No pass has begun yet.
        Starting,
        Waiting,
        Syncing,
        /// Until somebody changes something.
        Stopped,
        Paused
    };

    /// More than these are only counted.
    static constexpr int MostProblems = 100;

    QString directory;
    /// Without a user.
    QString url;
    State state = State::Starting;

    /// Of the last pass that came to its end; invalid before.
    QDateTime lastPass;
    PassResult::End lastEnd = PassResult::End::InStep;
    int fetched = 0;
    int sent = 0;
    int moved = 0;
    int deleted = 0;
    qint64 bytes = 0;
    double seconds = 0;
    /// What it left to somebody, one for each path.
    QVector<report::SyncEvent> problems;
    int problemCount = 0;
    int conflictCount = 0;
    /// For people: why it failed.
    QString error;

    QDateTime nextPass;
    std::optional<report::SyncProgress> progress;
    /// Since the transfers began.
    double progressSeconds = 0;
    /// For people: why changes here are only noticed by the passes that the clock begins.
    QString notWatched;
    QString newVersion;
};

/// What there is to say about the agent. A plain value.
struct AgentStatus {
    QString foldersFile;
    /// Of that file; what was read before holds as long as there is one.
    QStringList mistakes;
    /// Since it was read.
    bool hasFoldersFileChanged = false;
    QVector<FolderStatus> folders;
};

}  // namespace agent
}  // namespace ovsync
