#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <filesystem>
#include <ostream>
#include <random>
#include <string>
#include <thread>

#include "tests/sync-proof/Setting.h"
#include "tests/sync-proof/TwoSides.h"

namespace syncproof {
namespace {

using testing::AnyOf;

struct Fault {
    const char* text;
    /// Whether it is told by the silence.
    bool isSilent = false;
};

void PrintTo(const Fault& fault, std::ostream* stream) {
    *stream << fault.text;
}

std::string NameOf(const testing::TestParamInfo<Fault>& fault) {
    std::string name = std::to_string(fault.index) + "_" + fault.param.text;
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
}

/// Lets one request after the other meet the fault until a pass has fewer.
class FaultTest : public testing::TestWithParam<Fault> {
protected:
    FaultTest() {
        sides.StartService();
        sides.there.Write("changed", "first");
        sides.there.Write("removed 0", "to be removed");
        EXPECT_EQ(sides.Pull()->ExitCode(), 0);
    }

    /// A pass that meets the fault in its request number `request`. True when it has so many.
    template <typename Start>
    bool MeetAt(Start start) {
        sides.StartService({"--fault", GetParam().text + (",request=" + std::to_string(request))});
        here = sides.ImageHere();
        there = sides.ImageThere();
        pass = start();
        exitCode = pass->ExitCode();
        return sides.MetFault();
    }

    /// Later requests meet none, but there may have been too few.
    void EndFault() {
        if (!sides.MetFault()) {
            sides.StartService();
        }
    }

    /// Failures are told with a reason.
    void ExpectAnswerable() const {
        EXPECT_THAT(exitCode, AnyOf(0, 1, 3)) << pass->Text();
        if (exitCode != 0) {
            EXPECT_THAT(pass->Text(), testing::ContainsRegex("ovsync: .+|\"(detail|error)\":\".+\"")) << exitCode;
        }
        // The service takes back what it has of an upload once it notices that the client is gone.
        for (int i = 0; i < 1000 && !sides.Leftovers().empty(); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        EXPECT_EQ(sides.Leftovers(), "");
    }

    const std::vector<std::string> Patience{"--silence-limit", GetParam().isSilent ? "0.3" : "20", "-j", "1"};

    std::vector<std::string> With(std::vector<std::string> options) const {
        options.insert(options.end(), Patience.begin(), Patience.end());
        return options;
    }

    /// Over several runs all requests are met, because the first is drawn.
    const int stride = RequestStride();
    int request = 1 + static_cast<int>(std::random_device()() % static_cast<unsigned>(stride));
    TwoSides sides;
    FolderImage here;
    FolderImage there;
    std::unique_ptr<Pass> pass;
    int exitCode = 0;
};

TEST_P(FaultTest, APullCompletesOrSaysThatItDidNotAndDeletesNothing) {
    int failures = 0;
    bool hasMet = true;
    std::string removed = "removed 0";
    for (; hasMet && !HasFailure(); request += stride) {
        SCOPED_TRACE("in request " + std::to_string(request));
        std::filesystem::remove(sides.there / removed);
        removed = "removed " + std::to_string(request);
        sides.there.Write(removed, "to be removed");
        sides.there.Write("changed", "content " + std::to_string(request));
        sides.there.Write("new " + std::to_string(request), "new content");
        hasMet = MeetAt([this] { return sides.Pull(With({"--delete"})); });
        ExpectAnswerable();
        failures += exitCode == 0 ? 0 : 1;
        const FolderImage now = sides.ImageHere();
        if (exitCode == 0) {
            // That nothing changed cannot be told from a lie before the next pass.
            EXPECT_TRUE(now == there || GetParam().text == std::string("status=304")) << pass->Text();
        } else {
            for (const auto& [path, content] : here) {
                EXPECT_EQ(now.count(path), 1U) << path << " was deleted\n" << pass->Text();
            }
            for (const auto& [path, content] : now) {
                const bool isOld = here.count(path) != 0 && here.at(path) == content;
                const bool isNew = there.count(path) != 0 && there.at(path) == content;
                EXPECT_TRUE(isOld || isNew) << path << " is " << content << "\n" << pass->Text();
            }
        }
        EndFault();
        const auto next = sides.Pull({"--delete"});
        EXPECT_EQ(next->ExitCode(), 0) << next->Text();
        EXPECT_EQ(Differences(sides.ImageHere(), there), "");
        EXPECT_EQ(Differences(sides.ImageThere(), there), "");
    }
    EXPECT_TRUE(failures > 0 || stride > 1 || GetParam().text == std::string("status=304"));
}

TEST_P(FaultTest, APushCompletesOrSaysThatItDidNot) {
    int failures = 0;
    bool hasMet = true;
    for (; hasMet && !HasFailure(); request += stride) {
        SCOPED_TRACE("in request " + std::to_string(request));
        sides.here.Write("changed", "content " + std::to_string(request));
        sides.here.Write("folder " + std::to_string(request) + "/new", "new content");
        hasMet = MeetAt([this] { return sides.Push(With({})); });
        ExpectAnswerable();
        failures += exitCode == 0 ? 0 : 1;
        EXPECT_EQ(Differences(sides.ImageHere(), here), "") << pass->Text();
        const FolderImage now = sides.ImageThere();
        for (const auto& [path, content] : now) {
            const bool isOld = there.count(path) != 0 && there.at(path) == content;
            const bool isNew = here.count(path) != 0 && here.at(path) == content;
            EXPECT_TRUE(isOld || isNew) << path << " is " << content << "\n" << pass->Text();
        }
        EXPECT_EQ(exitCode == 0 ? Differences(here, now) : "", "") << pass->Text();
        EndFault();
        const auto next = sides.Push();
        EXPECT_EQ(next->ExitCode(), 0) << next->Text();
        EXPECT_EQ(Differences(here, sides.ImageThere()), "");
        EXPECT_EQ(Differences(sides.ImageHere(), here), "");
    }
    EXPECT_TRUE(failures > 0 || stride > 1);
}

INSTANTIATE_TEST_SUITE_P(Each, FaultTest,
                         testing::Values(Fault{"hang", true}, Fault{"drip", true}, Fault{"reset"},
                                         Fault{"redirect=302"}, Fault{"error-page"}, Fault{"status=204"},
                                         Fault{"status=206"}, Fault{"status=304"}, Fault{"status=401"},
                                         Fault{"status=403"}, Fault{"status=404"}, Fault{"status=412"},
                                         Fault{"status=500"}, Fault{"status=503"}, Fault{"cut=0"}, Fault{"cut=5"},
                                         Fault{"reset=5"}, Fault{"error-in-body=5"}, Fault{"content-type=text/html"},
                                         Fault{"content-length=+10"}, Fault{"content-length=-10"}),
                         NameOf);

}  // namespace
}  // namespace syncproof
