#include "client/cli/output/LoggedErrors.h"

#include <log4cplus/spi/loggingevent.h>

namespace ovsync {
namespace output {

namespace {

class ReceivingAppender : public log4cplus::Appender {
public:
    explicit ReceivingAppender(const LoggedErrors::Receiver& receiver) : _receiver(receiver) {
        setThreshold(log4cplus::ERROR_LOG_LEVEL);
    }
    ~ReceivingAppender() override { destructorImpl(); }

    void close() override { closed = true; }

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& event) override {
        _receiver(QString::fromStdString(log4cplus::helpers::tostring(event.getMessage())));
    }

private:
    const LoggedErrors::Receiver _receiver;
};

}  // namespace

LoggedErrors::LoggedErrors(const log4cplus::Logger& logger, const Receiver& receiver)
    : _logger(logger), _appender(new ReceivingAppender(receiver)) {
    _logger.addAppender(_appender);
}

LoggedErrors::~LoggedErrors() {
    _logger.removeAppender(_appender);
}

}  // namespace output
}  // namespace ovsync
