#include "tests/dvsync/LogRecorder.h"

#include <QString>

namespace tests {

namespace {

// log4cplus itself would narrow a text by the locale and lose letters.
std::string Narrow(const log4cplus::tstring& text) {
#ifdef UNICODE
    return QString::fromStdWString(text).toStdString();
#else
    return text;
#endif
}

}  // namespace

class LogRecorder::Appender : public log4cplus::Appender {
public:
    explicit Appender(std::vector<LogRecord>& records) : _records(records) {}
    ~Appender() override { destructorImpl(); }

    void close() override { closed = true; }

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override {
        _records.push_back({Narrow(event.getLoggerName()), event.getLogLevel(), Narrow(event.getFile()),
                            Narrow(event.getFunction()), event.getLine(), Narrow(event.getMessage())});
    }

private:
    std::vector<LogRecord>& _records;
};

LogRecorder::LogRecorder(const log4cplus::tstring& logger, log4cplus::LogLevel level)
    : _logger(log4cplus::Logger::getInstance(logger)),
      _levelBefore(_logger.getLogLevel()),
      _additivityBefore(_logger.getAdditivity()),
      _appender(new Appender(_records)) {
    _logger.setLogLevel(level);
    _logger.setAdditivity(false);
    _logger.addAppender(_appender);
}

LogRecorder::~LogRecorder() {
    _logger.removeAppender(_appender);
    _logger.setLogLevel(_levelBefore);
    _logger.setAdditivity(_additivityBefore);
}

}  // namespace tests
