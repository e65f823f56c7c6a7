#pragma once

#include <QByteArray>
#include <QLocalSocket>
#include <optional>

namespace ovsync {
namespace agent {

/// Asks this user's agent. The process has a QCoreApplication meanwhile. Not thread-safe.
class AgentClient {
public:
    /// Whether this user's agent runs, maybe without answering yet. The library looks at the names of processes alone.
    static bool IsRunning();

    /// False when there is none, or none that answers.
    [[nodiscard]] bool Send(const QByteArray& request);
    /// The next line; none when the agent is gone, or says nothing for so long. -1 waits for ever.
    std::optional<QByteArray> ReadLine(int milliseconds = 30000);

private:
    QLocalSocket _socket;
};

}  // namespace agent
}  // namespace ovsync
