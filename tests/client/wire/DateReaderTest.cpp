#include "client/wire/DateReader.h"

#include <gtest/gtest.h>

#include <QTimeZone>
#include <string>

namespace ovsync {
namespace wire {

namespace {

QString Read(const std::string& text) {
    const QDateTime time = ReadDate(text.data(), text.size());
    return time.isValid() ? time.toString(Qt::ISODateWithMs) : QStringLiteral("none");
}

TEST(DateReaderTest, ReadsTheThreeFormatsOfHttp) {
    const QString expected = QStringLiteral("1994-11-06T08:49:37.000Z");
    EXPECT_EQ(Read("Sun, 06 Nov 1994 08:49:37 GMT"), expected);
    EXPECT_EQ(Read("Sun, 6 Nov 1994 08:49:37 GMT"), expected);
    EXPECT_EQ(Read("Sunday, 06-Nov-94 08:49:37 GMT"), expected);
    EXPECT_EQ(Read("Sun Nov  6 08:49:37 1994"), expected);
    EXPECT_EQ(Read("Wed Nov 16 08:49:37 1994"), QStringLiteral("1994-11-16T08:49:37.000Z"));
}

TEST(DateReaderTest, ReadsEveryMonth) {
    const char* const months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    for (int i = 0; i < 12; ++i) {
        const QString expected = QStringLiteral("2026-%1-01T00:00:00.000Z").arg(i + 1, 2, 10, QLatin1Char('0'));
        EXPECT_EQ(Read(std::string("Mon, 01 ") + months[i] + " 2026 00:00:00 GMT"), expected);
    }
}

TEST(DateReaderTest, ReadsRfc3339WithOffsetsAndFractions) {
    EXPECT_EQ(Read("2026-11-19T08:00:00Z"), QStringLiteral("2026-11-19T08:00:00.000Z"));
    EXPECT_EQ(Read("2026-11-19t08:00:00z"), QStringLiteral("2026-11-19T08:00:00.000Z"));
    EXPECT_EQ(Read("2026-11-19T08:00:00.9871234Z"), QStringLiteral("2026-11-19T08:00:00.000Z"));
    EXPECT_EQ(Read("2026-01-01T00:30:00+01:00"), QStringLiteral("2025-12-31T23:30:00.000Z"));
    EXPECT_EQ(Read("2026-12-31T23:30:00-0130"), QStringLiteral("2027-01-01T01:00:00.000Z"));
    EXPECT_EQ(Read("2024-02-29T12:00:00Z"), QStringLiteral("2024-02-29T12:00:00.000Z"));
}

TEST(DateReaderTest, ReadsDatesBeforeTheEpoch) {
    EXPECT_EQ(Read("Wed, 31 Dec 1969 23:59:59 GMT"), QStringLiteral("1969-12-31T23:59:59.000Z"));
    EXPECT_EQ(Read("1601-01-01T00:00:00Z"), QStringLiteral("1601-01-01T00:00:00.000Z"));
}

TEST(DateReaderTest, PutsAYearOfTwoDigitsAtMostFiftyYearsAhead) {
    const int thisYear = QDateTime::currentDateTimeUtc().date().year();
    for (const int year : {thisYear - 49, thisYear, thisYear + 50}) {
        const std::string text = "Monday, 01-Jun-" + std::to_string(year).substr(2) + " 00:00:00 GMT";
        EXPECT_EQ(Read(text), QStringLiteral("%1-06-01T00:00:00.000Z").arg(year));
    }
}

TEST(DateReaderTest, TakesNothingElseForADate) {
    for (const char* text : {"",
                             "yesterday",
                             "Sun, 06 Nov 1994 08:49:37",
                             "Sun, 06 Nov 1994 08:49:37 PST",
                             "Sun, 06 Nov 94 08:49:37 GMT",
                             "Sun, 31 Nov 1994 08:49:37 GMT",
                             "Sun, 06 Nov 1994 24:00:00 GMT",
                             "Sun, 06 Nov 1994 08:49:37 GMT ",
                             "So, 06 Nov 1994 08:49:37 GMT",
                             "Sun, 06 Dez 1994 08:49:37 GMT",
                             "1994-11-06",
                             "1994-11-06T08:49:37",
                             "1994-11-06T08:49:37.Z",
                             "1994-11-06T08:49Z",
                             "1994-13-06T08:49:37Z",
                             "2023-02-29T00:00:00Z",
                             "1994-11-06T08:49:37+24:00",
                             "1994-11-06T08:49:37+01:00x",
                             "Sun Nov 6 08:49:37 1994",
                             "Sunday, 06-Nov-94 08:49:37",
                             "0000-01-01T00:00:00Z"}) {
        EXPECT_EQ(Read(text), QStringLiteral("none")) << text;
    }
}

TEST(DateReaderTest, TakesNoBeginningOfADateForADate) {
    for (const std::string text : {"Sun, 06 Nov 1994 08:49:37 GMT", "Sunday, 06-Nov-94 08:49:37 GMT",
                                   "Sun Nov  6 08:49:37 1994", "1994-11-06T08:49:37.5+01:00"}) {
        for (size_t size = 0; size < text.size(); ++size) {
            EXPECT_EQ(Read(text.substr(0, size)), QStringLiteral("none")) << text.substr(0, size);
        }
    }
}

TEST(DateReaderTest, WritesHttpDatesRoundedDown) {
    EXPECT_EQ(HttpDate(QDateTime::fromString(QStringLiteral("2026-11-20T10:15:30.999Z"), Qt::ISODateWithMs)),
              QByteArray("Fri, 20 Nov 2026 10:15:30 GMT"));
    EXPECT_EQ(HttpDate(QDateTime::fromMSecsSinceEpoch(-1, Qt::UTC)), QByteArray("Wed, 31 Dec 1969 23:59:59 GMT"));
}

TEST(DateReaderTest, WritesHttpDatesInGmt) {
    const QDateTime time(QDate(2026, 1, 1), QTime(0, 30), QTimeZone(3600));
    EXPECT_EQ(HttpDate(time), QByteArray("Wed, 31 Dec 2025 23:30:00 GMT"));
}

TEST(DateReaderTest, WritesNoDateThatHttpCannotHold) {
    EXPECT_EQ(HttpDate(QDateTime()), QByteArray());
    EXPECT_EQ(HttpDate(QDateTime(QDate(10000, 1, 1), QTime(0, 0), Qt::UTC)), QByteArray());
    EXPECT_EQ(HttpDate(QDateTime(QDate(-5, 1, 1), QTime(0, 0), Qt::UTC)), QByteArray());
}

TEST(DateReaderTest, ReadsWhatItWrites) {
    for (const qint64 seconds : {0LL, 951782400LL, 1795170930LL, 4102444799LL}) {
        const QDateTime time = QDateTime::fromMSecsSinceEpoch(seconds * 1000, Qt::UTC);
        const QByteArray text = HttpDate(time);
        EXPECT_EQ(ReadDate(text.constData(), static_cast<size_t>(text.size())), time);
    }
}

}  // namespace
}  // namespace wire
}  // namespace ovsync
