#pragma once

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "dvsync/platform/Platform.h"

/// What tests on Windows have in folders, run and load.

namespace tests {

/// Where the test program lies, and with it what was built.
inline std::filesystem::path ProgramFolder() {
    wchar_t file[MAX_PATH];
    GetModuleFileNameW(nullptr, file, MAX_PATH);
    return std::filesystem::path(file).parent_path();
}

/// A folder with blanks and letters of several alphabets in its name.
class Folder {
public:
    Folder()
        : _path(std::filesystem::temp_directory_path() /
                (L"Programme für Синхро " + std::to_wstring(GetCurrentProcessId()))) {
        std::filesystem::create_directories(_path);
    }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(_path, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const std::filesystem::path& Path() const { return _path; }

    /// A copy of a file that was built, under `name`.
    std::filesystem::path Copy(const wchar_t* fileName, const wchar_t* name) const {
        std::filesystem::copy_file(ProgramFolder() / fileName, _path / name,
                                   std::filesystem::copy_options::overwrite_existing);
        return _path / name;
    }

private:
    std::filesystem::path _path;
};

/// A program that runs as long as this.
class Process {
public:
    /// Started as the library starts the sync application: by a command line that is its quoted path alone. With
    /// `security` nobody may look at it.
    explicit Process(const std::filesystem::path& program, SECURITY_ATTRIBUTES* security = nullptr) {
        std::wstring commandLine = L"\"" + program.wstring() + L"\"";
        STARTUPINFOW startup = {};
        startup.cb = sizeof(startup);
        EXPECT_TRUE(CreateProcessW(nullptr, commandLine.data(), security, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                                   &_process))
            << GetLastError();
        // Its modules are listed a moment later.
        for (int i = 0; security == nullptr && i < 3000 && !sync::dv::dvsync::platform::ProcessName(Id()); ++i) {
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

/// Loaded as long as this.
class Library {
public:
    /// What it needs is looked for beside it first.
    explicit Library(const std::filesystem::path& file)
        : _module(LoadLibraryExW(file.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH)) {
        EXPECT_NE(_module, nullptr) << GetLastError();
    }
    ~Library() { FreeLibrary(_module); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    /// Calls what it exports under `name`.
    template <typename Result>
    Result Call(const char* name) const {
        const auto operation =
            reinterpret_cast<Result (*)()>(reinterpret_cast<void (*)()>(GetProcAddress(_module, name)));
        return operation();
    }

    HMODULE Module() const { return _module; }

private:
    HMODULE _module;
};

}  // namespace tests
