#include <signal.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <thread>

#include "tests/service/ServiceTest.h"

namespace service::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SyncCollectionTest : public ServiceTest {
protected:
    HttpClient::Answer Report(const std::string& target, const std::string& token,
                              const std::string& level = "infinite", const std::string& more = "") {
        return Send("REPORT", target, {"Depth: 0"},
                    "<D:sync-collection xmlns:D='DAV:'><D:sync-token>" + token + "</D:sync-token><D:sync-level>" +
                        level + "</D:sync-level>" + more + "<D:prop><D:getetag/></D:prop></D:sync-collection>");
    }

    static std::string TokenOf(const HttpClient::Answer& answer) {
        const std::string begin = "<D:sync-token>";
        const std::size_t at = answer.body.find(begin) + begin.size();
        return answer.body.substr(at, answer.body.find('<', at) - at);
    }

    // The hrefs of what changed since `lastToken`; those of what was removed have a '-' before them. Takes the new
    // token.
    std::vector<std::string> Changes(const std::string& target = "/", const std::string& level = "infinite") {
        const auto answer = Report(target, lastToken, level);
        EXPECT_EQ(answer.status, 207) << answer.body;
        std::vector<std::string> changes;
        for (const auto& [href, response] : Multistatus(answer.body).responses) {
            changes.push_back((response.statuses.empty() ? "-" : "") + href);
        }
        std::sort(changes.begin(), changes.end());
        lastToken = TokenOf(answer);
        return changes;
    }

    bool IsTokenRefused(const std::string& token, const std::string& target = "/") {
        const auto answer = Report(target, token);
        return answer.status == 403 && answer.body.find("<D:valid-sync-token/>") != std::string::npos;
    }

    std::string lastToken;
};

TEST_F(SyncCollectionTest, WithoutATokenReportsAllButTheCollectionItself) {
    folder.Write("d/e/f", "x");
    folder.Write("g", "x");
    EXPECT_THAT(Changes("/", "1"), ElementsAre("/d/", "/g"));
    lastToken.clear();
    EXPECT_THAT(Changes(), ElementsAre("/d/", "/d/e/", "/d/e/f", "/g"));
    EXPECT_THAT(Changes(), IsEmpty());
}

TEST_F(SyncCollectionTest, ReportsWhatWasMadeChangedAndRemovedSinceTheToken) {
    for (const char* target : {"/a", "/b", "/c"}) {
        Status("PUT", target, {}, "x");
    }
    Status("MKCOL", "/d");
    Changes();
    Status("PUT", "/a", {}, "other");
    Status("DELETE", "/b");
    Status("PUT", "/d/new", {}, "x");
    EXPECT_THAT(Changes(), ElementsAre("-/b", "/a", "/d/", "/d/new"));
    Status("DELETE", "/d");
    EXPECT_THAT(Changes(), ElementsAre("-/d/"));
    EXPECT_THAT(Changes(), IsEmpty());
}

TEST_F(SyncCollectionTest, MissesNoChangeHoweverCloseItIsToAReport) {
    for (int i = 0; i < 50; ++i) {
        const std::string name = "/" + std::to_string(i);
        Status("PUT", name, {}, "x");
        EXPECT_THAT(Changes(), ElementsAre(name));
    }
    Status("DELETE", "/7");
    EXPECT_THAT(Changes(), ElementsAre("-/7"));
    Status("DELETE", "/8");
    EXPECT_THAT(Changes(), ElementsAre("-/8"));
}

TEST_F(SyncCollectionTest, ReportsAMoveAsRemovedThereAndAllOfItAsNewHere) {
    folder.Write("d/f", "x");
    folder.Write("e/g", "x");
    Changes();
    Status("MOVE", "/d", {Destination("/e/d")});
    EXPECT_THAT(Changes(), ElementsAre("-/d/", "/e/", "/e/d/", "/e/d/f"));
}

TEST_F(SyncCollectionTest, ReportsChangesByHand) {
    folder.Write("a", "x");
    folder.Write("d/b", "x");
    Changes();
    folder.Write("a", "longer");
    std::filesystem::remove(folder / "d/b");
    folder.Write("d/c", "x");
    EXPECT_THAT(Changes(), ElementsAre("-/d/b", "/a", "/d/", "/d/c"));
}

TEST_F(SyncCollectionTest, ReportsTheCollectionAskedForToItsLevelOnly) {
    folder.Write("d/e/f", "x");
    folder.Write("other", "x");
    Changes();
    const std::string token = lastToken;
    Status("DELETE", "/other");
    Status("DELETE", "/d/e/f");
    Status("PUT", "/d/e/new", {}, "x");
    EXPECT_THAT(Changes("/d/", "1"), ElementsAre("/d/e/"));
    lastToken = token;
    EXPECT_THAT(Changes("/d/"), ElementsAre("-/d/e/f", "/d/e/", "/d/e/new"));
}

TEST_F(SyncCollectionTest, FileThatCameBackHasChanged) {
    Status("PUT", "/f", {}, "x");
    Changes();
    Status("DELETE", "/f");
    Status("PUT", "/f", {}, "x");
    EXPECT_THAT(Changes(), ElementsAre("/f"));
}

TEST_F(SyncCollectionTest, TokenFromBeforeACollectionWasReplacedIsRefused) {
    folder.Write("d/f", "x");
    folder.Write("e/g", "x");
    Changes();
    const std::string token = lastToken;
    Status("DELETE", "/d");
    Status("MKCOL", "/d");
    EXPECT_TRUE(IsTokenRefused(token));
    EXPECT_TRUE(IsTokenRefused(token, "/d/"));
    lastToken.clear();
    EXPECT_THAT(Changes(), ElementsAre("/d/", "/e/", "/e/g"));
}

TEST_F(SyncCollectionTest, TokenThatIsNotOfThisRunIsRefused) {
    Status("PUT", "/f", {}, "x");
    Changes();
    for (const std::string& token :
         {std::string("urn:other"), lastToken + "x", lastToken.substr(0, lastToken.rfind(':') + 1)}) {
        EXPECT_TRUE(IsTokenRefused(token)) << token;
    }
    service.End(SIGTERM);
    ServiceProcess next({folder.Path()});
    HttpClient other(next.Port());
    const auto answer = other.Send("REPORT", "/", {},
                                   "<sync-collection xmlns='DAV:'><sync-token>" + lastToken +
                                       "</sync-token><sync-level>1</sync-level><prop/></sync-collection>");
    EXPECT_EQ(answer.status, 403);
}

TEST_F(SyncCollectionTest, TokenFromTheTimeToComeIsRefused) {
    Status("PUT", "/a", {}, "x");
    Changes();
    const std::size_t time = lastToken.rfind(':') + 1;
    const auto later = [&](long milliseconds) {
        return lastToken.substr(0, time) + std::to_string(std::stol(lastToken.substr(time)) + milliseconds);
    };
    EXPECT_FALSE(IsTokenRefused(later(0)));
    EXPECT_TRUE(IsTokenRefused(later(1)));
    EXPECT_TRUE(IsTokenRefused(later(86400000)));
}

TEST_F(SyncCollectionTest, TokenOfACollectionStaysUntilSomethingChanges) {
    folder.Write("d/f", "x");
    Changes();
    const auto token = [&] {
        const auto answer =
            Send("PROPFIND", "/d/", {"Depth: 0"}, "<propfind xmlns='DAV:'><prop><sync-token/></prop></propfind>");
        return Multistatus(answer.body).responses.at("/d/").values.at("sync-token");
    };
    EXPECT_EQ(token(), lastToken);
    std::this_thread::sleep_for(std::chrono::milliseconds(3));
    EXPECT_EQ(token(), lastToken);
    Status("PUT", "/d/f", {}, "y");
    EXPECT_NE(token(), lastToken);
    lastToken = token();
    EXPECT_THAT(Changes(), IsEmpty());
}

TEST_F(SyncCollectionTest, IsSaidToBeSupportedByCollections) {
    Status("PUT", "/f", {}, "x");
    const auto answer =
        Send("PROPFIND", "/", {"Depth: 1"}, "<propfind xmlns='DAV:'><prop><supported-report-set/></prop></propfind>");
    const Multistatus document(answer.body);
    EXPECT_EQ(document.responses.at("/").statuses.at("supported-report-set"), 200);
    EXPECT_EQ(document.responses.at("/f").statuses.at("supported-report-set"), 404);
    EXPECT_THAT(answer.body, testing::HasSubstr("<D:sync-collection/>"));
    EXPECT_THAT(Send("OPTIONS", "/").headers.at("allow"), testing::HasSubstr("REPORT"));
}

TEST_F(SyncCollectionTest, ThatCannotBeIsRefused) {
    Status("PUT", "/f", {}, "x");
    EXPECT_EQ(Report("/absent/", "").status, 404);
    EXPECT_EQ(Report("/f", "").status, 403);
    EXPECT_EQ(Report("/", "", "2").status, 400);
    EXPECT_EQ(Report("/", "", "1", "<D:limit><D:nresults>x</D:nresults></D:limit>").status, 400);
    EXPECT_EQ(Status("REPORT", "/", {"Depth: 1"},
                     "<sync-collection xmlns='DAV:'><sync-token/><sync-level>1</sync-level></sync-collection>"),
              400);
    EXPECT_EQ(Status("REPORT", "/", {}, "<version-tree xmlns='DAV:'/>"), 400);
}

TEST_F(SyncCollectionTest, LimitThatIsTooLowIsSaidToBe) {
    folder.Write("a", "x");
    folder.Write("b", "x");
    EXPECT_EQ(Report("/", "", "1", "<D:limit><D:nresults>2</D:nresults></D:limit>").status, 207);
    const auto answer = Report("/", "", "1", "<D:limit><D:nresults>1</D:nresults></D:limit>");
    EXPECT_EQ(answer.status, 507);
    EXPECT_THAT(answer.body, testing::HasSubstr("<D:number-of-matches-within-limits/>"));
}

}  // namespace
}  // namespace service::test
