// The library itself, loaded while the program runs.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "dvsync/platform/Platform.h"
#include "tests/dvsync/platform/WindowsFixtures.h"

namespace {

namespace fs = std::filesystem;
namespace platform = sync::dv::dvsync::platform;

/// The running processes with that executable, which are let go at the end of this, and the file of each.
std::vector<fs::path> EndProcessesNamed(const std::u16string& name) {
    std::vector<fs::path> files;
    for (const std::uint32_t id : platform::ProcessIds(1U << 20U)) {
        if (platform::ProcessName(id) != name) {
            continue;
        }
        const HANDLE process = OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id);
        wchar_t file[MAX_PATH];
        DWORD length = MAX_PATH;
        EXPECT_TRUE(QueryFullProcessImageNameW(process, 0, file, &length)) << GetLastError();
        files.emplace_back(std::wstring(file, length));
        EXPECT_TRUE(TerminateProcess(process, 0));
        EXPECT_EQ(WaitForSingleObject(process, INFINITE), WAIT_OBJECT_0);
        CloseHandle(process);
    }
    return files;
}

/// Everything that was built, in a folder with blanks and letters of several alphabets in its name.
class LoadedLibraryTest : public testing::Test {
protected:
    LoadedLibraryTest() {
        for (const fs::directory_entry& entry : fs::directory_iterator(tests::ProgramFolder())) {
            if (entry.path().extension() == L".dll") {
                _folder.Copy(entry.path().filename().c_str(), entry.path().filename().c_str());
            }
        }
        _folder.Copy(OVSYNC_AGENT_FILE_NAME, OVSYNC_AGENT_FILE_NAME);
    }

    const tests::Folder _folder;
};

TEST_F(LoadedLibraryTest, TheSyncApplicationIsStartedFromTheFolderOfTheCoreLibrary) {
    ASSERT_EQ(platform::ModuleFile(u"OvSyncCore"), u"");
    const tests::Library library(_folder.Path() / DVSYNC_FILE_NAME);
    ASSERT_EQ(platform::ModuleFile(u"OvSyncCore"), (_folder.Path() / L"OvSyncCore.dll").u16string());

    ASSERT_TRUE(library.Call<bool>("_ZN4sync2dv6dvsync16StartSyncServiceEv"));
    std::vector<fs::path> started;
    for (int i = 0; i < 3000 && started.empty(); ++i) {
        Sleep(10);
        started = EndProcessesNamed(u"OvSync.exe");
    }
    EXPECT_EQ(started, std::vector<fs::path>{_folder.Path() / OVSYNC_AGENT_FILE_NAME});
}

TEST_F(LoadedLibraryTest, GoesWhenItsHostLetsItGoAndComesBack) {
    for (int i = 0; i < 20; ++i) {
        {
            const tests::Library library(_folder.Path() / DVSYNC_FILE_NAME);
            EXPECT_EQ(platform::ModuleFile(u"OvSyncCore"), (_folder.Path() / L"OvSyncCore.dll").u16string());
        }
        ASSERT_EQ(platform::ModuleFile(u"dvsync"), u"");
        ASSERT_EQ(platform::ModuleFile(u"OvSyncCore"), u"");
    }
}

TEST_F(LoadedLibraryTest, ThreadNotificationsStayOnAsTheCompilersRuntimeHasThreadLocalStorage) {
    const tests::Library library(_folder.Path() / DVSYNC_FILE_NAME);
    EXPECT_FALSE(DisableThreadLibraryCalls(library.Module()));
}

}  // namespace
