#include "service/protocol/ByteRange.h"

#include <gtest/gtest.h>

namespace service::protocol {
namespace {

std::string Range(const std::string& header) {
    const auto range = ByteRange::Parse(header, 10);
    return range ? std::to_string(range->first) + "+" + std::to_string(range->size) : "none";
}

TEST(ByteRange, IsWithinTheFile) {
    EXPECT_EQ(Range("bytes=0-3"), "0+4");
    EXPECT_EQ(Range("bytes=7-"), "7+3");
    EXPECT_EQ(Range("bytes=-4"), "6+4");
    EXPECT_EQ(Range("bytes=-40"), "0+10");
    EXPECT_EQ(Range("bytes=9-99"), "9+1");
    EXPECT_EQ(Range("Bytes=0-3"), "0+4");
}

TEST(ByteRange, BeyondTheEndCannotBeSatisfied) {
    EXPECT_EQ(Range("bytes=10-"), "0+0");
    EXPECT_EQ(Range("bytes=-0"), "10+0");
}

TEST(ByteRange, MayHavePositionsBeyond64Bits) {
    EXPECT_EQ(Range("bytes=2-18446744073709551615"), "2+8");
    EXPECT_EQ(Range("bytes=2-18446744073709551616"), "2+8");
    EXPECT_EQ(Range("bytes=2-99999999999999999999999999"), "2+8");
    EXPECT_EQ(Range("bytes=-99999999999999999999999999"), "0+10");
    EXPECT_EQ(Range("bytes=99999999999999999999999999-"), "0+0");
    EXPECT_EQ(Range("bytes=99999999999999999999999998-99999999999999999999999999"), "0+0");
}

TEST(ByteRange, ThatIsNoneIsNotRead) {
    for (const char* header : {"", "bytes", "bytes=", "bytes=-", "bytes=3", "bytes=3-2", "bytes=0-1,3-4", "bytes=a-b",
                               "bytes=0-1x", "bytes=0x-1", "bytes=--1", "bytes=+1-2", "lines=0-1"}) {
        EXPECT_EQ(Range(header), "none") << header;
    }
}

}  // namespace
}  // namespace service::protocol
