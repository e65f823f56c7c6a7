#include <gtest/gtest.h>
#include <sys/wait.h>

#include <QFileInfo>

#include "dvsync/Utf16.h"
#include "dvsync/platform/Platform.h"
#include "host/core/SyncAppName.h"
#include "tests/fakes/Text.h"

namespace {

namespace platform = sync::dv::dvsync::platform;
using sync::dv::dvsync::FromUtf16;
using tests::Text;

TEST(LinuxPlatformTest, AProcessThatHasEndedAndIsNotReapedHasNoName) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(0);
    }
    siginfo_t ended;
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT), 0);
    EXPECT_EQ(platform::ProcessName(static_cast<std::uint32_t>(child)), std::nullopt);
    waitpid(child, nullptr, 0);
}

TEST(LinuxPlatformTest, AModuleIsFoundByTheNameOfItsLibraryWithoutPrefixAndExtension) {
    // Keeps the library from being left out of the program.
    ASSERT_FALSE(sync::core::GetSyncAppName().isEmpty());
    EXPECT_EQ(QFileInfo(FromUtf16(platform::ModuleFile(u"OvSyncCore"))).canonicalFilePath(),
              QFileInfo(QString::fromLocal8Bit(OVSYNC_CORE_FILE)).canonicalFilePath());
}

TEST(LinuxPlatformTest, AModuleIsFoundWhateverItsVersion) {
    EXPECT_EQ(QFileInfo(FromUtf16(platform::ModuleFile(u"Qt5Core"))).fileName(), Text("libQt5Core.so.5"));
}

TEST(LinuxPlatformTest, TheBeginningOfANameIsNotTheName) {
    EXPECT_EQ(platform::ModuleFile(u"OvSyncCor"), u"");
    EXPECT_EQ(platform::ModuleFile(u"OvSync"), u"");
}

}  // namespace
