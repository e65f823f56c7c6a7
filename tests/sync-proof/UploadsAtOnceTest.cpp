#include "tests/sync-proof/UploadsAtOnce.h"

#include <gtest/gtest.h>

namespace syncproof {
namespace {

std::string Line(const std::string& begin, int microseconds, const std::string& request) {
    return begin + " " + std::to_string(microseconds) + " us: " + request + ", If-Match -, ETag -\n";
}

TEST(UploadsAtOnceTest, NamesThePathsOfUploadsThatRanAtTheSameTime) {
    const std::string log =
        "begins\n" + Line("18:20:03.765", 246, "PUT /shared/a 201") + Line("18:20:03.765", 995, "PUT /shared/b c 201") +
        Line("18:20:03.766", 100, "PUT /shared/a 204") + Line("18:20:02.100", 3000000, "PUT /shared/b c 204");
    EXPECT_EQ(UploadsAtOnce(log), std::set<std::string>({"/shared/a", "/shared/b c"}));
}

TEST(UploadsAtOnceTest, NamesNoOthers) {
    EXPECT_TRUE(UploadsAtOnce(Line("18:20:03.765", 246, "PUT /a 201") + Line("18:20:03.768", 100, "PUT /a 204") +
                              Line("18:20:03.768", 100, "PUT /b 204") + Line("18:20:03.768", 100, "PUT /a 412") +
                              Line("18:20:03.768", 100, "DELETE /a 204") + Line("18:20:03.768", 100, "PUT /c 423"))
                    .empty());
}

TEST(UploadsAtOnceTest, NamesAreThoseOfTheLog) {
    EXPECT_EQ(InLogOfApache("a\tb\n\"\\\xC3\xA9 %2e"), "a\\tb\\n\\\"\\\\\\xc3\\xa9 %2e");
}

}  // namespace
}  // namespace syncproof
