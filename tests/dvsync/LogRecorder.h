#pragma once

#include <log4cplus/appender.h>
#include <log4cplus/logger.h>
#include <log4cplus/spi/loggingevent.h>

#include <string>
#include <vector>

namespace tests {

/// The levels, by the numbers that hosts know them by.
const int DebugLevel = 10000;
const int InfoLevel = 20000;
const int ErrorLevel = 40000;

/// A record that a logger wrote. Texts are UTF-8.
struct LogRecord {
    std::string logger;
    int level = 0;
    std::string file;
    std::string function;
    int line = 0;
    std::string text;
};

/// Keeps what the logger of a name writes, from `level` on, as long as this object lives. The empty name stands for all
/// loggers that no other object of this kind keeps.
class LogRecorder {
public:
    explicit LogRecorder(const log4cplus::tstring& logger, log4cplus::LogLevel level = log4cplus::ALL_LOG_LEVEL);
    ~LogRecorder();
    LogRecorder(const LogRecorder&) = delete;
    LogRecorder& operator=(const LogRecorder&) = delete;

    const std::vector<LogRecord>& Records() const { return _records; }

private:
    class Appender;

    std::vector<LogRecord> _records;
    log4cplus::Logger _logger;
    log4cplus::LogLevel _levelBefore;
    bool _additivityBefore;
    log4cplus::SharedAppenderPtr _appender;
};

}  // namespace tests
