// What holds on every system.

#include "dvsync/platform/Platform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

namespace platform = sync::dv::dvsync::platform;

TEST(PlatformTest, TheRunningProcessIsAmongTheProcesses) {
    // Far more than any machine runs.
    EXPECT_THAT(platform::ProcessIds(1U << 20U), testing::Contains(platform::CurrentProcessId()));
}

TEST(PlatformTest, ListsNoMoreProcessesThanItIsAskedFor) {
    EXPECT_EQ(platform::ProcessIds(1).size(), 1U);
}

TEST(PlatformTest, AProcessGoesByTheBaseNameOfItsExecutable) {
    EXPECT_EQ(platform::ProcessName(platform::CurrentProcessId()), PLATFORM_TESTS_FILE_NAME);
}

TEST(PlatformTest, AProcessThatIsNotThereHasNoName) {
    EXPECT_EQ(platform::ProcessName(0xFFFFFFF0U), std::nullopt);
}

TEST(PlatformTest, AModuleThatIsNotLoadedHasNoFile) {
    EXPECT_EQ(platform::ModuleFile(u"NoSuchModule"), u"");
}

}  // namespace
