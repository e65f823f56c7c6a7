#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <algorithm>
#include <set>
#include <vector>

#include "dvsync/Utf16.h"
#include "dvsync/platform/Platform.h"
#include "host/core/SyncAppName.h"
#include "tests/fakes/TemporaryDirectory.h"
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

/// Runs this program's namesake `name`, which ends when this object does, and tells how the system calls it.
class RunningProgram {
public:
    explicit RunningProgram(const QString& name) : _file(_directory.FilePath(name)) {
        EXPECT_TRUE(QFile::copy(Text("/bin/cat"), _file));
        _process.start(_file, QStringList());
        EXPECT_TRUE(_process.waitForStarted());
    }
    ~RunningProgram() {
        _process.closeWriteChannel();
        EXPECT_TRUE(_process.waitForFinished());
    }

    void RemoveFile() const { EXPECT_TRUE(QFile::remove(_file)); }
    QString Name() const {
        return FromUtf16(
            platform::ProcessName(static_cast<std::uint32_t>(_process.processId())).value_or(u"not known"));
    }

private:
    const tests::TemporaryDirectory _directory;
    const QString _file;
    QProcess _process;
};

TEST(LinuxPlatformTest, AProgramWhoseFileWasRemovedGoesByTheNameThatItHad) {
    const RunningProgram program(Text("Ov S\xC3\xBCnc.exe"));
    EXPECT_EQ(program.Name(), Text("Ov S\xC3\xBCnc.exe"));
    program.RemoveFile();
    EXPECT_EQ(program.Name(), Text("Ov S\xC3\xBCnc.exe"));
}

TEST(LinuxPlatformTest, OnlyOneMarkOfARemovedFileIsLeftOut) {
    const RunningProgram program(Text("a (deleted)"));
    program.RemoveFile();
    EXPECT_EQ(program.Name(), Text("a (deleted)"));
    const RunningProgram other(Text("a (deleted) b"));
    EXPECT_EQ(other.Name(), Text("a (deleted) b"));
}

TEST(LinuxPlatformTest, AProgramThatIsCalledLikeTheMarkAloneKeepsItsName) {
    const RunningProgram program(Text(" (deleted)"));
    EXPECT_EQ(program.Name(), Text(" (deleted)"));
}

TEST(LinuxPlatformTest, EveryProcessIsListedOnceAndNothingElse) {
    const std::vector<std::uint32_t> ids = platform::ProcessIds(1U << 20U);
    EXPECT_EQ(std::set<std::uint32_t>(ids.begin(), ids.end()).size(), ids.size());
    EXPECT_EQ(std::count(ids.begin(), ids.end(), 0U), 0);
    EXPECT_EQ(std::count(ids.begin(), ids.end(), 1U), 1);
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

TEST(LinuxPlatformTest, WhatFollowsTheExtensionOfALibraryIsItsVersionOrNothing) {
    const tests::TemporaryDirectory directory;
    const QString file = directory.FilePath(Text("libProbe.soap"));
    ASSERT_TRUE(QFile::copy(FromUtf16(platform::ModuleFile(u"m")), file));
    void* const library = dlopen(QFile::encodeName(file).constData(), RTLD_LAZY);
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(platform::ModuleFile(u"Probe"), u"");
    dlclose(library);
}

TEST(LinuxPlatformTest, TheBeginningOfANameIsNotTheName) {
    EXPECT_EQ(platform::ModuleFile(u"OvSyncCor"), u"");
    EXPECT_EQ(platform::ModuleFile(u"OvSync"), u"");
}

}  // namespace
