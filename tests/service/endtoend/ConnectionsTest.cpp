#include <memory>

#include "tests/service/ServiceTest.h"

namespace service::test {
namespace {

// As many as may be idle at a time.
constexpr std::size_t MostIdle = 100;

class ConnectionsTest : public ServiceTest {
protected:
    RawConnection& Open() {
        connections.push_back(std::make_unique<RawConnection>(service.Port()));
        return *connections.back();
    }
    // Whether an answer comes over the connection.
    static bool IsAnswered(RawConnection& connection) {
        const std::string end = "\r\n\r\n";
        connection.Send("HEAD / HTTP/1.1\r\nHost: x\r\n\r\n");
        std::string answer;
        while (answer.find(end) == std::string::npos && connection.End() == RawConnection::Ending::Open) {
            answer += connection.Read(10000, 1);
        }
        return answer.find("HTTP/1.1 200 ") == 0;
    }

    std::vector<std::unique_ptr<RawConnection>> connections;
};

TEST_F(ConnectionsTest, ThatHaveBeenIdleForLongestGiveWayToNewOnes) {
    RawConnection& busy = Open();
    busy.Send("PUT /f HTTP/1.1\r\nHost: x\r\nContent-Length: 10\r\nExpect: 100-continue\r\n\r\n");
    ASSERT_THAT(busy.Read(10000, 12), testing::StartsWith("HTTP/1.1 100"));
    RawConnection& silent = Open();
    RawConnection& first = Open();
    ASSERT_TRUE(IsAnswered(first));
    while (connections.size() < MostIdle + 1) {
        ASSERT_TRUE(IsAnswered(Open()));
    }
    // Makes it the one that was used last.
    ASSERT_TRUE(IsAnswered(first));

    ASSERT_TRUE(IsAnswered(Open()));
    EXPECT_EQ(silent.Read(), "");
    EXPECT_EQ(silent.End(), RawConnection::Ending::Closed);
    EXPECT_TRUE(IsAnswered(first));
    busy.Send("0123456789");
    EXPECT_THAT(busy.Read(10000, 12), testing::StartsWith("HTTP/1.1 201"));
    EXPECT_EQ(folder.Read("f"), "0123456789");
}

TEST_F(ConnectionsTest, ThatAreKeptOpenInLargeNumbersKeepNobodyOut) {
    for (std::size_t i = 0; i < 12 * MostIdle; ++i) {
        ASSERT_TRUE(IsAnswered(Open())) << i;
    }
}

}  // namespace
}  // namespace service::test
