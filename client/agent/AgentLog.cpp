#include "client/agent/AgentLog.h"

#include <log4cplus/consoleappender.h>
#include <log4cplus/fileappender.h>
#include <log4cplus/layout.h>

#include <memory>

#include "client/cli/output/TerminalText.h"

namespace ovsync {
namespace agent {

namespace {

const long LargestLogFile = 1024L * 1024;
const int KeptLogFiles = 5;

log4cplus::tstring LogText(const QString& text) {
#ifdef UNICODE
    return text.toStdWString();
#else
    return text.toStdString();
#endif
}

void AddAppender(log4cplus::Appender* added, const log4cplus::tchar* pattern) {
    const log4cplus::SharedAppenderPtr appender(added);
    appender->setLayout(std::make_unique<log4cplus::PatternLayout>(pattern));
    log4cplus::Logger::getRoot().addAppender(appender);
}

}  // namespace

void BeginLog(const QString& folder, bool isShown) {
    const log4cplus::tstring file = LogText(folder + QLatin1String("/agent.log"));
    AddAppender(new log4cplus::RollingFileAppender(file, LargestLogFile, KeptLogFiles, true, true),
                LOG4CPLUS_TEXT("%D{%Y-%m-%d %H:%M:%S} %-5p %c: %m%n"));
    if (isShown) {
        // A journal has the time already.
        AddAppender(new log4cplus::ConsoleAppender(true, true), LOG4CPLUS_TEXT("%p %c: %m%n"));
    }
    log4cplus::Logger::getRoot().setLogLevel(log4cplus::INFO_LOG_LEVEL);
    // To the library it is an error when a service publishes nothing, which most do.
    log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("config")).setLogLevel(log4cplus::OFF_LOG_LEVEL);
}

log4cplus::Logger AgentLogger() {
    return log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("agent"));
}

void LogLine(const log4cplus::Logger& logger, log4cplus::LogLevel level, const QString& text) {
    logger.log(level, LogText(output::TerminalText(text)));
}

}  // namespace agent
}  // namespace ovsync
