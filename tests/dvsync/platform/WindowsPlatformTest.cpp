#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <thread>

#include "dvsync/platform/Platform.h"
#include "dvsync/platform/ProcessSearch.h"

namespace {

namespace fs = std::filesystem;
namespace platform = sync::dv::dvsync::platform;

bool EqualIgnoringCase(const std::u16string& a, const std::u16string& b) {
    const auto lower = [](char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c - u'A' + u'a') : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [&](char16_t x, char16_t y) { return lower(x) == lower(y); });
}

bool IsRunning(const std::u16string& wanted) {
    return platform::AnotherProcessIsRunning(
        [&](const std::u16string& name) { return EqualIgnoringCase(name, wanted); });
}

fs::path ProgramFolder() {
    wchar_t file[MAX_PATH];
    GetModuleFileNameW(nullptr, file, MAX_PATH);
    return fs::path(file).parent_path();
}

// A folder with blanks and letters of several alphabets in its name.
class Folder {
public:
    Folder() : _path(fs::temp_directory_path() / (L"Programme für Синхро " + std::to_wstring(GetCurrentProcessId()))) {
        fs::create_directories(_path);
    }
    ~Folder() {
        std::error_code ignored;
        fs::remove_all(_path, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    // A copy of a file that was built, under `name`.
    fs::path Copy(const wchar_t* fileName, const wchar_t* name) const {
        fs::copy_file(ProgramFolder() / fileName, _path / name, fs::copy_options::overwrite_existing);
        return _path / name;
    }

private:
    fs::path _path;
};

// A program that runs as long as this.
class Process {
public:
    // Started as the library starts the sync application: by a command line that is its quoted path alone. With
    // `security` nobody may look at it.
    explicit Process(const fs::path& program, SECURITY_ATTRIBUTES* security = nullptr) {
        std::wstring commandLine = L"\"" + program.wstring() + L"\"";
        STARTUPINFOW startup = {};
        startup.cb = sizeof(startup);
        EXPECT_TRUE(CreateProcessW(nullptr, commandLine.data(), security, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                                   &_process))
            << GetLastError();
        // Its modules are listed a moment later.
        for (int i = 0; security == nullptr && i < 3000 && !platform::ProcessName(Id()); ++i) {
            Sleep(10);
        }
    }
    ~Process() { End(); }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    std::uint32_t Id() const { return _process.dwProcessId; }

    void End() {
        if (_process.hProcess == nullptr) {
            return;
        }
        EXPECT_TRUE(TerminateProcess(_process.hProcess, 0));
        EXPECT_EQ(WaitForSingleObject(_process.hProcess, INFINITE), WAIT_OBJECT_0);
        CloseHandle(_process.hThread);
        CloseHandle(_process.hProcess);
        _process = {};
    }

private:
    PROCESS_INFORMATION _process = {};
};

// Loaded as long as this.
class Library {
public:
    explicit Library(const fs::path& file) : _module(LoadLibraryW(file.c_str())) {
        EXPECT_NE(_module, nullptr) << GetLastError();
    }
    ~Library() { FreeLibrary(_module); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    int ThreadNotifications() const {
        const auto operation =
            reinterpret_cast<int (*)()>(reinterpret_cast<void (*)()>(GetProcAddress(_module, "ThreadNotifications")));
        return operation();
    }

private:
    HMODULE _module;
};

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

TEST(WindowsPlatformTest, TheSyncApplicationIsStartedFromTheFolderOfTheCoreLibrary) {
    const Folder folder;
    folder.Copy(OVSYNC_AGENT_FILE_NAME, L"OvSync.exe");
    const fs::path library = folder.Copy(LIBRARY_FILE_NAME, L"OvSyncCore.dll");
    ASSERT_EQ(platform::ModuleFile(u"OvSyncCore"), u"");
    {
        const Library core(library);
        const std::u16string file = platform::ModuleFile(u"OvSyncCore");
        EXPECT_EQ(file, library.u16string());
        EXPECT_EQ(platform::ModuleFile(u"ovsynccore"), file);

        const Process agent(fs::path(file).parent_path() / L"OvSync.exe");
        EXPECT_TRUE(IsRunning(u"OvSync.exe"));
    }
    EXPECT_EQ(platform::ModuleFile(u"OvSyncCore"), u"");
}

TEST(EntryPointTest, TheLibraryIsNotToldOfThreads) {
    const Library plain(ProgramFolder() / LIBRARY_FILE_NAME);
    const Library withEntryPoint(ProgramFolder() / LIBRARY_WITH_ENTRY_POINT_FILE_NAME);
    std::thread([] {}).join();
    EXPECT_GT(plain.ThreadNotifications(), 0);
    EXPECT_EQ(withEntryPoint.ThreadNotifications(), 0);
}

}  // namespace
