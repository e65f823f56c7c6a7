#include "service/protocol/HttpDate.h"

#include <gtest/gtest.h>

#include <limits>

namespace service::protocol {
namespace {

constexpr std::int64_t Moment = 1795169730;  // 2026-11-20 10:15:30 UTC, a Friday

TEST(HttpDate, IsWrittenAsHttpAndAsIsoDate) {
    EXPECT_EQ(FormatHttpDate(Moment), "Fri, 20 Nov 2026 10:15:30 GMT");
    EXPECT_EQ(FormatIsoDate(Moment), "2026-11-20T10:15:30Z");
    EXPECT_EQ(FormatHttpDate(-1), "Wed, 31 Dec 1969 23:59:59 GMT");
}

TEST(HttpDate, ThatNoFourDigitYearHoldsIsClamped) {
    EXPECT_EQ(FormatIsoDate(std::numeric_limits<std::int64_t>::max()), "9999-12-31T23:59:59Z");
}

TEST(HttpDate, IsReadInAllThreeFormsOfHttp) {
    EXPECT_EQ(ParseHttpDate("Fri, 20 Nov 2026 10:15:30 GMT"), Moment);
    EXPECT_EQ(ParseHttpDate("Friday, 20-Nov-26 10:15:30 GMT"), Moment);
    EXPECT_EQ(ParseHttpDate("Fri Nov 20 10:15:30 2026"), Moment);
    EXPECT_EQ(ParseIsoDate("2026-11-20T10:15:30Z"), Moment);
}

TEST(HttpDate, ThatIsNoneIsNotRead) {
    for (const char* text : {"", "yesterday", "Fri, 20 Nov 2026 10:15:30", "Fri, 20 Nov 2026 10:15:30 GMT+1",
                             "Mon, 30 Feb 2026 10:15:30 GMT", "Fri, 20 Nov 2026 25:15:30 GMT"}) {
        EXPECT_FALSE(ParseHttpDate(text)) << text;
    }
    EXPECT_FALSE(ParseIsoDate("2026-11-20"));
    EXPECT_FALSE(ParseIsoDate("2026-02-30T10:15:30Z"));
}

}  // namespace
}  // namespace service::protocol
