#pragma once

#include <QString>

namespace ovsync {
namespace agent {

/// Makes sure that a user has one agent: the lock of a file that ends with its process, in any way.
class AgentLock {
public:
    /// The file is agent.lock in `folder`.
    explicit AgentLock(const QString& folder);
    ~AgentLock();
    AgentLock(const AgentLock&) = delete;
    AgentLock& operator=(const AgentLock&) = delete;

    /// False when another process has it. Throws SyncException when the file cannot be made.
    [[nodiscard]] bool Take();
    /// Whether another process has it. Takes nothing.
    bool IsTaken();

private:
    bool _Open(int flags);

    const QString _path;
    int _file = -1;
};

}  // namespace agent
}  // namespace ovsync
