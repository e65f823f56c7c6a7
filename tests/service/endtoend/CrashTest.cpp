#include <algorithm>
#include <chrono>
#include <optional>
#include <random>
#include <thread>

#include "tests/service/ServiceTest.h"

namespace service::test {
namespace {

// What one file of the load should be like.
struct State {
    // Empty: it is not there.
    std::string target;
    std::string content;
    std::string color;
    // Stay as long as the file is there.
    std::string resourceId;
    std::string itemId;
};

// Content that shows by itself whether it is whole.
std::string Content(int number) {
    std::string text;
    for (int line = 0; line < 3000; ++line) {
        text += std::to_string(number) + "\n";
    }
    return text + "end " + std::to_string(number);
}

// Changes one file again and again until the service is gone.
class Load {
public:
    Load(int id, unsigned seed) : _id(id), _random(seed) {}

    void Run(int port) {
        HttpClient client(port);
        for (;;) {
            State next = _current;
            const std::string a = "/load-" + std::to_string(_id) + "-a";
            const std::string b = "/load-" + std::to_string(_id) + "-b";
            HttpClient::Answer answer;
            const unsigned kind = _current.target.empty() ? 0 : static_cast<unsigned>(_random() % 6);
            if (kind <= 2) {
                next.target = _current.target.empty() ? a : _current.target;
                next.content = Content(++_number);
                _next = next;
                answer = client.Send("PUT", next.target, {}, next.content);
            } else if (kind == 3) {
                next.target = _current.target == a ? b : a;
                _next = next;
                answer = client.Send("MOVE", _current.target, {"Destination: " + client.Url(next.target)});
            } else if (kind == 4) {
                next.color = std::to_string(++_number);
                _next = next;
                answer = client.Send("PROPPATCH", _current.target, {},
                                     "<D:propertyupdate xmlns:D='DAV:' xmlns:u='urn:u'><D:set><D:prop><u:color>" +
                                         next.color + "</u:color></D:prop></D:set></D:propertyupdate>");
            } else {
                next = State();
                _next = next;
                answer = client.Send("DELETE", _current.target);
            }
            if (answer.status == 0) {
                return;
            }
            EXPECT_LT(answer.status, 300);
            ++_acknowledged;
            _current = next;
            _next.reset();
        }
    }

    // What is there must be what was acknowledged last, or what the request that was cut off asked for.
    void Verify(HttpClient& client) {
        State found;
        for (const char* suffix : {"-a", "-b"}) {
            const std::string target = "/load-" + std::to_string(_id) + suffix;
            const auto answer = client.Send("GET", target);
            if (answer.status == 200) {
                EXPECT_EQ(found.target, "") << "in two places";
                auto properties = Properties(client, target);
                found = {target, answer.body, properties["{urn:u}color"], properties["resourceid"],
                         properties["itemid"]};
            } else {
                EXPECT_EQ(answer.status, 404);
            }
        }
        const auto matches = [&](const State& state) {
            return found.target == state.target && found.content == state.content && found.color == state.color;
        };
        EXPECT_TRUE(matches(_current) || (_next && matches(*_next)))
            << "found '" << found.target << "' of " << found.content.size() << " bytes ending in '"
            << found.content.substr(found.content.size() - std::min<std::size_t>(found.content.size(), 12))
            << "', color " << found.color << "; acknowledged '" << _current.target << "', color " << _current.color;
        if (!found.target.empty() && !_current.resourceId.empty()) {
            EXPECT_EQ(found.resourceId, _current.resourceId);
            EXPECT_EQ(found.itemId, _current.itemId);
        }
        _current = found;
        _next.reset();
    }

    int Acknowledged() const { return _acknowledged; }

private:
    int _id;
    std::minstd_rand _random;
    int _number = 0;
    int _acknowledged = 0;
    State _current;
    std::optional<State> _next;
};

TEST(Crash, LosesNothingThatWasAcknowledgedAndLeavesNothingHalfDone) {
    const TemporaryFolder folder;
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::minstd_rand random(seed);
    constexpr int loadCount = 3;
    std::vector<Load> loads;
    loads.reserve(loadCount);
    for (int id = 0; id < loadCount; ++id) {
        loads.emplace_back(id, static_cast<unsigned>(random()));
    }
    for (int round = 0; round < 15; ++round) {
        ServiceProcess service({folder.Path()});
        {
            HttpClient client(service.Port());
            for (Load& load : loads) {
                load.Verify(client);
            }
            const auto listing = client.Send("PROPFIND", "/", {"Depth: infinity"});
            EXPECT_LE(Multistatus(listing.body).responses.size(), loads.size() + 1);
        }
        EXPECT_TRUE(std::filesystem::is_empty(folder / ".ovsync-service/work"));
        std::vector<std::thread> threads;
        threads.reserve(loadCount);
        for (Load& load : loads) {
            threads.emplace_back([&load, port = service.Port()] { load.Run(port); });
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20 + random() % 100));
        EXPECT_EQ(service.End(SIGKILL), -SIGKILL);
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
    int acknowledged = 0;
    for (const Load& load : loads) {
        acknowledged += load.Acknowledged();
    }
    EXPECT_GT(acknowledged, 0) << "the service was killed before it did anything";
}

}  // namespace
}  // namespace service::test
