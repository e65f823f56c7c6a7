#pragma once

#include <log4cplus/appender.h>
#include <log4cplus/logger.h>

#include <QString>
#include <functional>

namespace ovsync {
namespace output {

/// Passes on what a logger and those below it write at level ERROR and above, as long as this object lives; other
/// appenders get it as well.
class LoggedErrors {
public:
    /// Takes the message of a record. Must not throw, and must be safe on any thread that logs.
    using Receiver = std::function<void(const QString& message)>;

    LoggedErrors(const log4cplus::Logger& logger, const Receiver& receiver);
    ~LoggedErrors();
    LoggedErrors(const LoggedErrors&) = delete;
    LoggedErrors& operator=(const LoggedErrors&) = delete;

private:
    log4cplus::Logger _logger;
    log4cplus::SharedAppenderPtr _appender;
};

}  // namespace output
}  // namespace ovsync
