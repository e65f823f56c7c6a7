#pragma once

#include <log4cplus/logger.h>

#include <QString>

namespace ovsync {
namespace agent {

/// Has all that is logged, from INFO on, written to agent.log in `folder`, of which the last five mebibytes are kept in
/// six files, and also to standard error if `isShown`. Nothing that is logged has a password in it. To be called once.
void BeginLog(const QString& folder, bool isShown);

/// What the agent itself logs to.
log4cplus::Logger AgentLogger();

/// Writes `text` as one line.
void LogLine(const log4cplus::Logger& logger, log4cplus::LogLevel level, const QString& text);

}  // namespace agent
}  // namespace ovsync
