#include "dvsync/platform/ProcessSearch.h"

#include <gtest/gtest.h>

#include "tests/dvsync/platform/FakePlatform.h"

namespace {

using sync::dv::dvsync::platform::AnotherProcessIsRunning;
using tests::FakePlatform;
using tests::TheFakePlatform;

bool IsRunning(const std::u16string& wanted) {
    return AnotherProcessIsRunning([&](const std::u16string& name) { return name == wanted; });
}

class ProcessSearchTest : public testing::Test {
protected:
    ProcessSearchTest() { TheFakePlatform() = FakePlatform(); }
};

TEST_F(ProcessSearchTest, NothingIsFoundWhereTheSystemListsNoProcesses) {
    EXPECT_FALSE(IsRunning(u"OvSync.exe"));
    EXPECT_EQ(TheFakePlatform().walks, 1);
}

TEST_F(ProcessSearchTest, FindsAProcessByItsName) {
    TheFakePlatform().processes = {{5, u"init"}, {6, u"OvSync.exe"}};
    EXPECT_TRUE(IsRunning(u"OvSync.exe"));
    EXPECT_FALSE(IsRunning(u"OvSync"));
}

TEST_F(ProcessSearchTest, TheSearchingProcessIsNeverFound) {
    TheFakePlatform().currentProcessId = 6;
    TheFakePlatform().processes = {{5, u"init"}, {6, u"OvSync.exe"}};
    EXPECT_FALSE(IsRunning(u"OvSync.exe"));
    EXPECT_EQ(TheFakePlatform().processesAskedFor, (std::vector<std::uint32_t>{5}));
}

TEST_F(ProcessSearchTest, AnotherProcessWithTheNameOfTheSearchingOneIsFound) {
    TheFakePlatform().currentProcessId = 6;
    TheFakePlatform().processes = {{6, u"OvSync.exe"}, {7, u"OvSync.exe"}};
    EXPECT_TRUE(IsRunning(u"OvSync.exe"));
}

TEST_F(ProcessSearchTest, AProcessWhoseNameTheSystemDoesNotTellIsCalledUnknown) {
    TheFakePlatform().processes = {{5, std::nullopt}};
    EXPECT_TRUE(IsRunning(u"<unknown>"));
    EXPECT_FALSE(IsRunning(u"OvSync.exe"));
}

TEST_F(ProcessSearchTest, AProcessThatCannotBeLookedAtHidesNoneAfterIt) {
    TheFakePlatform().processes = {{5, std::nullopt}, {6, u"OvSync.exe"}};
    EXPECT_TRUE(IsRunning(u"OvSync.exe"));
}

TEST_F(ProcessSearchTest, NoProcessAfterTheFirstMatchIsLookedAt) {
    TheFakePlatform().processes = {{5, u"OvSync.exe"}, {6, u"OvSync.exe"}};
    EXPECT_TRUE(IsRunning(u"OvSync.exe"));
    EXPECT_EQ(TheFakePlatform().processesAskedFor, (std::vector<std::uint32_t>{5}));
}

TEST_F(ProcessSearchTest, SeesTheFirst1024ProcessesAndNoMore) {
    for (std::uint32_t id = 1001; id <= 2023; ++id) {
        TheFakePlatform().processes.emplace_back(id, u"other");
    }
    TheFakePlatform().processes.emplace_back(2024, u"the 1024th");
    TheFakePlatform().processes.emplace_back(2025, u"the 1025th");
    EXPECT_TRUE(IsRunning(u"the 1024th"));
    EXPECT_FALSE(IsRunning(u"the 1025th"));
}

}  // namespace
