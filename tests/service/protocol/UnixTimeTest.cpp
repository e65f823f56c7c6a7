#include "service/protocol/UnixTime.h"

#include <gtest/gtest.h>

namespace service::protocol {
namespace {

TEST(UnixTime, HasNoZerosAtTheEndOfItsFraction) {
    EXPECT_EQ(FormatUnixTime(0), "0");
    EXPECT_EQ(FormatUnixTime(1795169730000000000), "1795169730");
    EXPECT_EQ(FormatUnixTime(1795169730120000000), "1795169730.12");
    EXPECT_EQ(FormatUnixTime(1795169730000000001), "1795169730.000000001");
    EXPECT_EQ(FormatUnixTime(-1), "");
}

TEST(UnixTime, IsReadWithUpToNineDigitsBehindThePoint) {
    EXPECT_EQ(ParseUnixTime("0"), 0);
    EXPECT_EQ(ParseUnixTime("1795169730"), 1795169730000000000);
    EXPECT_EQ(ParseUnixTime("1795169730.12"), 1795169730120000000);
    EXPECT_EQ(ParseUnixTime("1795169730.000000001"), 1795169730000000001);
    EXPECT_EQ(ParseUnixTime("9223372035.999999999"), 9223372035999999999);
}

TEST(UnixTime, ThatIsNoneIsNotRead) {
    for (const char* text : {"", " 1", "1 ", "-1", "+1", "1.", ".5", "1.1234567890", "1.x", "1e9", "0x1", "9223372036",
                             "99999999999999999999"}) {
        EXPECT_FALSE(ParseUnixTime(text)) << text;
    }
}

}  // namespace
}  // namespace service::protocol
