#include <gmock/gmock.h>
#include <signal.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>

#include "tests/sync-proof/TwoSides.h"

namespace syncproof {
namespace {

namespace fs = std::filesystem;

using testing::HasSubstr;

class RecordsTest : public testing::Test {
protected:
    RecordsTest() {
        sides.StartService();
        for (int i = 0; i < 200; ++i) {
            sides.there.Write("file " + std::to_string(i), "content " + std::to_string(i));
        }
        EXPECT_EQ(sides.Pull()->ExitCode(), 0);
        sides.there.Write("file 1", "changed there");
        sides.here.Write("file 2", "changed here");
    }

    /// Changes the bytes of the database.
    void Edit(const std::function<void(std::string& bytes)>& change) const {
        std::string bytes = sides.here.Read(Database);
        change(bytes);
        sides.here.Write(Database, bytes);
    }

    /// Neither a pull nor a push does anything with the records as they are.
    void ExpectRefusal(const std::string& reason) {
        const FolderImage here = sides.ImageHere();
        const FolderImage there = sides.ImageThere();
        const std::string records = sides.here.Read(Database);
        for (const bool isPull : {true, false}) {
            const auto pass = isPull ? sides.Pull({"--delete"}) : sides.Push();
            EXPECT_EQ(pass->ExitCode(), 1) << pass->Text();
            EXPECT_THAT(pass->Errors(), HasSubstr(reason));
        }
        EXPECT_EQ(Differences(sides.ImageHere(), here), "");
        EXPECT_EQ(Differences(sides.ImageThere(), there), "");
        EXPECT_EQ(sides.here.Read(Database), records);
    }

    const std::string Database = ".ovsync/records.db";
    TwoSides sides;
};

TEST_F(RecordsTest, ASecondPassAtOnceIsRefused) {
    sides.StartService({"--fault", "hang,request=1"});
    const auto first = sides.Pull();
    while (!sides.MetFault()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    ExpectRefusal("another process is syncing this folder");
    first->Signal(SIGKILL);
    EXPECT_EQ(first->ExitCode(), -SIGKILL);
    EXPECT_EQ(sides.Pull()->ExitCode(), 0);
}

TEST_F(RecordsTest, ADamagedDatabaseIsRefused) {
    const std::string whole = sides.here.Read(Database);
    Edit([](std::string& bytes) { bytes.replace(0, 16, "this is no SQLit"); });
    ExpectRefusal("records.db");
    Edit([&](std::string& bytes) { bytes = whole.substr(0, whole.size() / 2); });
    ExpectRefusal("records.db");
    Edit([&](std::string& bytes) {
        bytes = whole;
        bytes.replace(8192, bytes.size() - 8192, bytes.size() - 8192, '\xA5');
    });
    ExpectRefusal("records.db");
    Edit([&](std::string& bytes) { bytes = whole; });
    EXPECT_EQ(sides.Pull()->ExitCode(), 0);
    EXPECT_EQ(sides.Push()->ExitCode(), 0);
    EXPECT_EQ(Differences(sides.ImageHere(), sides.ImageThere()), "");
}

TEST_F(RecordsTest, AFormatOfANewerProgramIsRefused) {
    // Where SQLite keeps the number that an application may choose.
    Edit([](std::string& bytes) { bytes[63] = 99; });
    ExpectRefusal("99");
}

TEST_F(RecordsTest, WithoutRecordsNothingIsLostEither) {
    fs::remove_all(sides.here / ".ovsync");
    const auto pull = sides.Pull({"--delete"});
    EXPECT_EQ(pull->ExitCode(), 1) << pull->Text();
    const FolderImage here = sides.ImageHere();
    EXPECT_EQ(here.size(), 202U);
    EXPECT_EQ(here.at("file 1"), "content 1");
    EXPECT_EQ(here.at("file 2"), "changed here");
    EXPECT_EQ(MissingFrom(here, sides.ImageThere()), (std::set<std::string>{"file 1", "file 2"}));
    std::set<std::string> contents = ContentsOf(here);
    EXPECT_EQ(contents.count("changed there") + contents.count("content 2"), 2U);
}

}  // namespace
}  // namespace syncproof
