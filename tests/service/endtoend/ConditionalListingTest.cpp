#include <ctime>
#include <functional>
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
    folder.Write("d/by-hand", "x");
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
    folder.Write("d/f", "x");
    Send("PROPFIND", "/");
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    const std::time_t date = Seconds(Send("OPTIONS", "/").headers.at("date"));
    EXPECT_EQ(Since(date, "/", "infinity").status, 304);
    folder.Write("d/f", "changed");
    EXPECT_EQ(Since(date, "/", "infinity").status, 207);
    EXPECT_EQ(Since(date, "/", "1").status, 304);
    std::filesystem::remove(folder / "d/f");
    EXPECT_EQ(Since(date, "/", "1").status, 207);
}

// Three folders in each other with a file in each, below `top`.
void MakeLevels(const TemporaryFolder& folder, const std::string& top) {
    for (const char* level : {"", "/1", "/1/2"}) {
        folder.Write(top + level + "/f", "x");
        folder.Write(top + level + "/d/f", "x");
    }
}

TEST_F(ConditionalListingTest, ChangeAtAnyLevelOfATreeChangesTheTreeAndNoOther) {
    struct Change {
        const char* name;
        // Makes it in the folder `target`.
        std::function<long(const std::string& target)> make;
    };
    const std::string setProperty =
        "<D:propertyupdate xmlns:D='DAV:'><D:set><D:prop><D:resourceclasstype>drovane.objects.Form"
        "</D:resourceclasstype></D:prop></D:set></D:propertyupdate>";
    const std::vector<Change> changes{
        {"put", [&](const std::string& in) { return Status("PUT", in + "/new", {}, "x"); }},
        {"overwrite", [&](const std::string& in) { return Status("PUT", in + "/f", {}, "y"); }},
        {"mkcol", [&](const std::string& in) { return Status("MKCOL", in + "/new"); }},
        {"proppatch", [&](const std::string& in) { return Status("PROPPATCH", in + "/d", {}, setProperty); }},
        {"delete", [&](const std::string& in) { return Status("DELETE", in + "/f"); }},
        {"delete-folder", [&](const std::string& in) { return Status("DELETE", in + "/d"); }},
        {"rename", [&](const std::string& in) { return Status("MOVE", in + "/f", {Destination(in + "/g")}); }},
        {"rename-folder", [&](const std::string& in) { return Status("MOVE", in + "/d", {Destination(in + "/e")}); }},
        {"move-out", [&](const std::string& in) { return Status("MOVE", in + "/d", {Destination("/moved")}); }},
        {"move-in", [&](const std::string& in) { return Status("MOVE", "/moved", {Destination(in + "/g")}); }},
        {"copy-in", [&](const std::string& in) { return Status("COPY", "/kept", {Destination(in + "/g")}); }},
        {"delete-by-id",
         [&](const std::string& in) {
             return Status("DELETE", "/.ovs/folders/" + Properties(client, in + "/d").at("itemid"));
         }},
    };
    const std::vector<std::string> levels{"", "/1", "/1/2"};
    const auto top = [](const Change& change, std::size_t level) {
        return std::string(change.name) + "-" + std::to_string(level);
    };
    for (const Change& change : changes) {
        for (std::size_t level = 0; level < levels.size(); ++level) {
            MakeLevels(folder, top(change, level));
        }
    }
    folder.Write("kept/f", "x");
    Send("PROPFIND", "/");
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    const std::time_t date = Seconds(Send("OPTIONS", "/").headers.at("date"));
    ASSERT_EQ(Since(date, "/", "infinity").status, 304);
    for (std::size_t level = 0; level < levels.size(); ++level) {
        for (const Change& change : changes) {
            SCOPED_TRACE(top(change, level));
            const std::string tree = "/" + top(change, level);
            EXPECT_EQ(Since(date, tree, "infinity").status, 304);
            EXPECT_THAT(change.make(tree + levels[level]), testing::AnyOf(201, 204, 207));
            for (std::size_t above = 0; above < levels.size(); ++above) {
                EXPECT_EQ(Since(date, tree + levels[above], "infinity").status, above <= level ? 207 : 304) << above;
            }
            EXPECT_EQ(Since(date, "/kept", "infinity").status, 304);
        }
    }
    EXPECT_EQ(Since(date, "/", "infinity").status, 207);
}

TEST_F(ConditionalListingTest, DateThatCannotBeReadIsNoCondition) {
    EXPECT_EQ(Send("PROPFIND", "/", {"Depth: 0", "If-Modified-Since: yesterday"}).status, 207);
}

TEST_F(ConditionalListingTest, ResourceThatIsNotThereIsNotUnchanged) {
    EXPECT_EQ(Since(Seconds("Fri, 20 Nov 2037 10:15:30 GMT"), "/absent").status, 404);
}

}  // namespace
}  // namespace service::test
