// Over a fake of the operating system; tests/endtoend has the real one.

#include "dvsync/SyncService.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <chrono>
#include <thread>

#include "dvsync/ModuleDirectory.h"
#include "dvsync/Utf16.h"
#include "tests/dvsync/platform/FakePlatform.h"
#include "tests/fakes/TemporaryDirectory.h"
#include "tests/fakes/Text.h"

namespace {

using namespace sync::dv::dvsync;  // NOLINT(google-build-using-namespace)
using tests::FakePlatform;
using tests::Text;
using tests::TheFakePlatform;

class SyncServiceTest : public testing::Test {
protected:
    SyncServiceTest() { TheFakePlatform() = FakePlatform(); }
};

TEST_F(SyncServiceTest, IsFoundInAnyLetterCase) {
    TheFakePlatform().processes = {{5, u"OvSync.exe"}};
    EXPECT_TRUE(IsDrovaneSynchronizationServiceRunning(Text("OvSync.exe")));
    EXPECT_TRUE(IsDrovaneSynchronizationServiceRunning(Text("oVsYNC.EXE")));
    EXPECT_FALSE(IsDrovaneSynchronizationServiceRunning(Text("OvSync")));
    EXPECT_FALSE(IsDrovaneSynchronizationServiceRunning(QString()));
}

TEST_F(SyncServiceTest, IsFoundInAnyLetterCaseOfOtherAlphabets) {
    TheFakePlatform().processes = {{5, u"Синхро Ä.exe"}};
    EXPECT_TRUE(IsDrovaneSynchronizationServiceRunning(Text("СИНХРО ä.EXE")));
}

TEST_F(SyncServiceTest, TheCallerItselfIsNotTheService) {
    TheFakePlatform().currentProcessId = 5;
    TheFakePlatform().processes = {{5, u"OvSync.exe"}};
    EXPECT_FALSE(IsDrovaneSynchronizationServiceRunning(Text("OvSync.exe")));
}

TEST_F(SyncServiceTest, AProcessThatCannotBeLookedAtIsUnknown) {
    TheFakePlatform().processes = {{5, std::nullopt}};
    EXPECT_TRUE(IsDrovaneSynchronizationServiceRunning(Text("<UNKNOWN>")));
}

// The answer is the one of the process, so that one test asks for all of it.
TEST_F(SyncServiceTest, TheCachedCheckWalksTheProcessesEveryTwoSecondsAndLooksForOvSyncWhateverItIsAsked) {
    TheFakePlatform().processes = {{5, u"OvSync.exe"}};
    QElapsedTimer timer;
    timer.start();
    EXPECT_TRUE(CachedIsDrovaneSynchronizationServiceRunning(Text("other.exe")));
    EXPECT_EQ(TheFakePlatform().walks, 1);

    TheFakePlatform().processes = {{5, u"other.exe"}};
    for (const int pause : {0, 1200}) {
        std::this_thread::sleep_for(std::chrono::milliseconds(pause));
        const bool kept = CachedIsDrovaneSynchronizationServiceRunning(Text("OvSync.exe"));
        if (timer.elapsed() >= 2000) {
            GTEST_SKIP() << "this machine took more than two seconds for two calls";
        }
        EXPECT_TRUE(kept);
        EXPECT_EQ(TheFakePlatform().walks, 1);
    }

    std::this_thread::sleep_for(std::chrono::seconds(1));
    EXPECT_FALSE(CachedIsDrovaneSynchronizationServiceRunning(Text("other.exe")));
    EXPECT_EQ(TheFakePlatform().walks, 2);
}

TEST(ModuleDirectoryTest, IsTheAbsoluteDirectoryOfTheModulesFile) {
    TheFakePlatform() = FakePlatform();
    const QString directory = QDir::rootPath() + Text("opt/Ov Sync/über");
    TheFakePlatform().moduleFiles = {{u"OvSyncCore", ToUtf16(directory + Text("/libOvSyncCore.so"))}};
    EXPECT_EQ(GetModuleDirectory(Text("OvSyncCore")), directory);
}

TEST(ModuleDirectoryTest, IsAbsoluteForAModuleWhoseFileIsNot) {
    TheFakePlatform() = FakePlatform();
    TheFakePlatform().moduleFiles = {{u"OvSyncCore", u"lib/../libOvSyncCore.so"}, {u"Other", u"libOther.so"}};
    EXPECT_EQ(GetModuleDirectory(Text("OvSyncCore")), QDir::currentPath());
    EXPECT_EQ(GetModuleDirectory(Text("Other")), QDir::currentPath());
}

TEST(ModuleDirectoryTest, IsNotTheOneThatALinkPointsTo) {
    const tests::TemporaryDirectory directory;
    const QDir folder(directory.FilePath(QString()));
    ASSERT_TRUE(folder.mkpath(Text("real")));
    ASSERT_TRUE(QFile::link(folder.filePath(Text("real")), folder.filePath(Text("link"))));
    TheFakePlatform() = FakePlatform();
    TheFakePlatform().moduleFiles = {{u"OvSyncCore", ToUtf16(folder.filePath(Text("link/libOvSyncCore.so")))}};
    EXPECT_EQ(GetModuleDirectory(Text("OvSyncCore")), folder.filePath(Text("link")));
}

TEST(ModuleDirectoryTest, IsEmptyForAModuleThatIsNotLoaded) {
    TheFakePlatform() = FakePlatform();
    EXPECT_EQ(GetModuleDirectory(Text("OvSyncCore")), QString());
}

// A folder with a program in the place of the sync application that tells how it was started.
class StartSyncServiceTest : public SyncServiceTest {
protected:
    StartSyncServiceTest() {
        EXPECT_TRUE(QDir().mkpath(folder));
        const QString program = folder + Text("/OvSync.exe");
#ifdef _WIN32
        EXPECT_TRUE(QFile::copy(Text(STARTED_PROGRAM), program));
#else
        QFile script(program);
        EXPECT_TRUE(script.open(QIODevice::WriteOnly));
        script.write("#!/bin/sh\ncd \"${0%/*}\" && echo \"$0|$#\" >unfinished && mv unfinished started\n");
        script.close();
        EXPECT_TRUE(script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
#endif
    }

    // The command line that the program saw, once it has run.
    QString Started() const {
        QFile file(folder + Text("/started"));
        // On Windows it is there a moment before it can be opened.
        for (int i = 0; i < 3000 && !file.open(QIODevice::ReadOnly); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        EXPECT_TRUE(file.isOpen()) << "the program has not run";
        return QString::fromUtf8(file.readAll()).trimmed();
    }

    tests::TemporaryDirectory directory;
    QString folder = directory.FilePath(Text("Programme für %1  Sync"));
};

TEST_F(StartSyncServiceTest, StartsTheProgramBesideTheCoreLibraryWithoutArguments) {
    TheFakePlatform().moduleFiles = {{u"OvSyncCore", ToUtf16(folder + Text("/libOvSyncCore.so"))}};
    EXPECT_TRUE(StartSyncService());
    EXPECT_EQ(Started(), folder + Text("/OvSync.exe|0"));
}

TEST_F(StartSyncServiceTest, StartsTheProgramInTheCurrentDirectoryWhereTheCoreLibraryIsNotLoaded) {
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(folder));
    const bool started = StartSyncService();
    QDir::setCurrent(before);
    EXPECT_TRUE(started);
    EXPECT_EQ(Started(), QFileInfo(folder).canonicalFilePath() + Text("/OvSync.exe|0"));
}

TEST_F(StartSyncServiceTest, SaysNoWhereThereIsNoProgram) {
    TheFakePlatform().moduleFiles = {{u"OvSyncCore", ToUtf16(directory.FilePath(Text("libOvSyncCore.so")))}};
    EXPECT_FALSE(StartSyncService());
}

}  // namespace
