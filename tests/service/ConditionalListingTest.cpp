#include <ctime>
#include <thread>

#include "tests/service/ServiceTest.h"

namespace service::test {
namespace {

std::time_t Seconds(const std::string& httpDate) {
    std::tm fields{};
    strptime(httpDate.c_str(), "%a, %d %b %Y %H:%M:%S GMT", &fields);
    return timegm(&fields);
}

std::string HttpDate(std::time_t seconds) {
    std::string text(40, '\0');
    text.resize(std::strftime(text.data(), text.size(), "%a, %d %b %Y %H:%M:%S GMT", std::gmtime(&seconds)));
    return text;
}

class ConditionalListingTest : public ServiceTest {
protected:
    HttpClient::Answer Since(std::time_t seconds, const std::string& target = "/", const std::string& depth = "1") {
        return Send("PROPFIND", target, {"Depth: " + depth, "If-Modified-Since: " + HttpDate(seconds)});
    }

    // The second in which the service carried out a PUT of `target`.
    std::time_t PutWithinOneSecond(const std::string& target) {
        for (int attempt = 0;; ++attempt) {
            const std::time_t before = Seconds(Send("PUT", target, {}, std::to_string(attempt)).headers.at("date"));
            const std::time_t after = Seconds(Send("OPTIONS", "/").headers.at("date"));
            if (before == after) {
                return before;
            }
        }
    }
};

TEST_F(ConditionalListingTest, ChangeWithinTheGivenSecondIsAChange) {
    const std::time_t second = PutWithinOneSecond("/f");
    EXPECT_EQ(Since(second - 1).status, 207);
    EXPECT_EQ(Since(second).status, 207);
    const auto unchanged = Since(second + 1);
    EXPECT_EQ(unchanged.status, 304);
    EXPECT_EQ(unchanged.body, "");
    EXPECT_EQ(Normalized(unchanged.headers.at("date")), "DATE");
}

TEST_F(ConditionalListingTest, DateOfAListingMissesNoLaterChange) {
    Send("PUT", "/f", {}, "0");
    std::time_t date = Seconds(Send("PROPFIND", "/", {"Depth: 1"}).headers.at("date"));
    for (int i = 1; i <= 30; ++i) {
        Send("PUT", "/f", {}, std::to_string(i));
        const auto answer = Since(date);
        ASSERT_EQ(answer.status, 207) << i;
        date = Seconds(answer.headers.at("date"));
    }
}

TEST_F(ConditionalListingTest, QuietFolderIsUnchangedSinceItWasListed) {
    Send("MKCOL", "/d");
    Send("PUT", "/d/f", {}, "x");
    _folder.Write("d/by-hand", "x");
    Send("PROPFIND", "/");
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    const std::time_t date = Seconds(Send("PROPFIND", "/", {"Depth: 1"}).headers.at("date"));
    for (const char* depth : {"0", "1", "infinity"}) {
        EXPECT_EQ(Since(date, "/", depth).status, 304) << depth;
        EXPECT_EQ(Since(date, "/d", depth).status, 304) << depth;
        EXPECT_EQ(Since(date, "/d/f", depth).status, 304) << depth;
    }
    Send("PUT", "/d/f", {}, "y");
    EXPECT_EQ(Since(date, "/", "0").status, 304);
    EXPECT_EQ(Since(date, "/", "1").status, 207);
    EXPECT_EQ(Since(date, "/", "infinity").status, 207);
    EXPECT_EQ(Since(date, "/d/f", "0").status, 207);
}

TEST_F(ConditionalListingTest, ChangesByHandAreChanges) {
    _folder.Write("d/f", "x");
    Send("PROPFIND", "/");
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    const std::time_t date = Seconds(Send("OPTIONS", "/").headers.at("date"));
    EXPECT_EQ(Since(date, "/", "infinity").status, 304);
    _folder.Write("d/f", "changed");
    EXPECT_EQ(Since(date, "/", "infinity").status, 207);
    EXPECT_EQ(Since(date, "/", "1").status, 304);
    std::filesystem::remove(_folder / "d/f");
    EXPECT_EQ(Since(date, "/", "1").status, 207);
}

TEST_F(ConditionalListingTest, DateThatCannotBeReadIsNoCondition) {
    EXPECT_EQ(Send("PROPFIND", "/", {"Depth: 0", "If-Modified-Since: yesterday"}).status, 207);
}

TEST_F(ConditionalListingTest, ResourceThatIsNotThereIsNotUnchanged) {
    EXPECT_EQ(Since(Seconds("Fri, 20 Nov 2037 10:15:30 GMT"), "/absent").status, 404);
}

}  // namespace
}  // namespace service::test
