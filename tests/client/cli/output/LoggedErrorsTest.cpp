#include "client/cli/output/LoggedErrors.h"

#include <gmock/gmock.h>
#include <log4cplus/nullappender.h>

#include <QStringList>

namespace {

using log4cplus::Logger;
using ovsync::output::LoggedErrors;

class LoggedErrorsTest : public testing::Test {
protected:
    Logger logger = Logger::getInstance(LOG4CPLUS_TEXT("LoggedErrorsTest"));
    Logger below = Logger::getInstance(LOG4CPLUS_TEXT("LoggedErrorsTest.below"));
    QStringList messages;
};

TEST_F(LoggedErrorsTest, PassesErrorsOnAndNothingElse) {
    const LoggedErrors errors(logger, [this](const QString& message) { messages.append(message); });
    logger.setLogLevel(log4cplus::ALL_LOG_LEVEL);
    logger.log(log4cplus::INFO_LOG_LEVEL, LOG4CPLUS_TEXT("an info"));
    logger.log(log4cplus::ERROR_LOG_LEVEL, LOG4CPLUS_TEXT("an error, gr\xC3\xBC\xC3\x9F dich"));
    below.log(log4cplus::FATAL_LOG_LEVEL, LOG4CPLUS_TEXT("a fatal error below"));
    EXPECT_EQ(messages, QStringList({QString::fromUtf8("an error, gr\xC3\xBC\xC3\x9F dich"),
                                     QStringLiteral("a fatal error below")}));
}

TEST_F(LoggedErrorsTest, PassesNothingOnOnceItIsGone) {
    logger.setAdditivity(false);
    logger.addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender));
    {
        const LoggedErrors errors(logger, [this](const QString& message) { messages.append(message); });
    }
    logger.log(log4cplus::ERROR_LOG_LEVEL, LOG4CPLUS_TEXT("an error"));
    EXPECT_EQ(messages, QStringList());
}

}  // namespace
