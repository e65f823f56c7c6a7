#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <thread>

#include "dvsync/platform/Platform.h"
#include "dvsync/platform/ProcessSearch.h"
#include "tests/dvsync/platform/WindowsFixtures.h"

namespace {

namespace fs = std::filesystem;
namespace platform = sync::dv::dvsync::platform;
using tests::Folder;
using tests::Library;
using tests::Process;
using tests::ProgramFolder;

bool EqualIgnoringCase(const std::u16string& a, const std::u16string& b) {
    const auto lower = [](char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c - u'A' + u'a') : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [&](char16_t x, char16_t y) { return lower(x) == lower(y); });
}

bool IsRunning(const std::u16string& wanted) {
    return platform::AnotherProcessIsRunning(
        [&](const std::u16string& name) { return EqualIgnoringCase(name, wanted); });
}

TEST(WindowsPlatformTest, TheSyncApplicationIsFoundInAnyLetterCaseWhileItRuns) {
    Process agent(ProgramFolder() / OVSYNC_AGENT_FILE_NAME);
    EXPECT_TRUE(IsRunning(u"OvSync.exe"));
    EXPECT_TRUE(IsRunning(u"OVSYNC.EXE"));
    EXPECT_TRUE(IsRunning(u"ovsync.exe"));
    EXPECT_FALSE(IsRunning(u"OvSync"));
    agent.End();
    EXPECT_FALSE(IsRunning(u"OvSync.exe"));
}

TEST(WindowsPlatformTest, TheCallerItselfIsNeverFound) {
    ASSERT_EQ(platform::ProcessName(platform::CurrentProcessId()), u"platform-tests.exe");
    EXPECT_FALSE(IsRunning(u"platform-tests.exe"));
}

TEST(WindowsPlatformTest, AProcessThatCannotBeOpenedIsUnknown) {
    // An access list with nobody in it.
    ACL nobody;
    ASSERT_TRUE(InitializeAcl(&nobody, sizeof(nobody), ACL_REVISION));
    SECURITY_DESCRIPTOR descriptor;
    ASSERT_TRUE(InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION));
    ASSERT_TRUE(SetSecurityDescriptorDacl(&descriptor, TRUE, &nobody, FALSE));
    SECURITY_ATTRIBUTES security = {sizeof(security), &descriptor, FALSE};

    ASSERT_FALSE(IsRunning(u"<unknown>"));
    const Process agent(ProgramFolder() / OVSYNC_AGENT_FILE_NAME, &security);
    EXPECT_EQ(platform::ProcessName(agent.Id()), std::nullopt);
    EXPECT_TRUE(IsRunning(u"<unknown>"));
    EXPECT_FALSE(IsRunning(u"OvSync.exe"));
}

TEST(WindowsPlatformTest, NamesWithBlanksAndLettersOfOtherAlphabetsAreFound) {
    const Folder folder;
    const Process agent(folder.Copy(OVSYNC_AGENT_FILE_NAME, L"Über Синхро 同期.exe"));
    EXPECT_EQ(platform::ProcessName(agent.Id()), u"Über Синхро 同期.exe");
    EXPECT_TRUE(IsRunning(u"Über Синхро 同期.EXE"));
}

TEST(WindowsPlatformTest, AModuleIsFoundByItsNameWithoutExtensionInAnyLetterCaseWhileItIsLoaded) {
    const Folder folder;
    const fs::path file = folder.Copy(LIBRARY_FILE_NAME, L"Модуль Ä.dll");
    ASSERT_EQ(platform::ModuleFile(u"Модуль Ä"), u"");
    {
        const Library library(file);
        EXPECT_EQ(platform::ModuleFile(u"Модуль Ä"), file.u16string());
        EXPECT_EQ(platform::ModuleFile(u"мОДУЛЬ ä"), file.u16string());
    }
    EXPECT_EQ(platform::ModuleFile(u"Модуль Ä"), u"");
}

TEST(EntryPointTest, TheLibraryIsNotToldOfThreads) {
    const Library plain(ProgramFolder() / LIBRARY_FILE_NAME);
    const Library withEntryPoint(ProgramFolder() / LIBRARY_WITH_ENTRY_POINT_FILE_NAME);
    std::thread([] {}).join();
    EXPECT_GT(plain.Call<int>("ThreadNotifications"), 0);
    EXPECT_EQ(withEntryPoint.Call<int>("ThreadNotifications"), 0);
}

}  // namespace
