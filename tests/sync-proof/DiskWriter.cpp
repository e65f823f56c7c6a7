#include "tests/sync-proof/DiskWriter.h"

#include <fcntl.h>
#include <stdio.h>

#include <filesystem>
#include <fstream>

#include "tests/service/TemporaryFolder.h"
#include "tests/sync-proof/FolderImage.h"

namespace syncproof {
namespace {

/// False when the names do not allow it, because something else changes the folder meanwhile.
bool RenameAt(const std::string& from, const std::string& to, unsigned flags) {
    return renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), flags) == 0;
}

}  // namespace

DiskWriter::DiskWriter(const std::string& folder, Writing writing) : _folder(folder), _writing(writing) {}

bool DiskWriter::Write(const std::string& path, const std::string& content, Contents& retired) {
    if (_writing == Writing::InPlace) {
        retired.insert(service::test::ReadFile(_At(path)).value_or(""));
        std::ofstream(_At(path), std::ios::binary) << content;
        return true;
    }
    std::ofstream(_Elsewhere(), std::ios::binary) << content;
    // What comes out is what was overwritten, whoever put it there in the last moment.
    if (RenameAt(_Elsewhere(), _At(path), RENAME_EXCHANGE)) {
        _RetireElsewhere(retired);
    } else if (!RenameAt(_Elsewhere(), _At(path), RENAME_NOREPLACE)) {
        std::filesystem::remove(_Elsewhere());
        return false;
    }
    return true;
}

void DiskWriter::MakeFolder(const std::string& path) {
    std::filesystem::create_directory(_At(path));
}

void DiskWriter::Remove(const std::string& path, Contents& retired) {
    if (RenameAt(_At(path), _Elsewhere(), RENAME_NOREPLACE)) {
        _RetireElsewhere(retired);
    }
}

void DiskWriter::_RetireElsewhere(Contents& retired) const {
    namespace fs = std::filesystem;
    // Whoever had the folder open can still put something into it.
    while (fs::is_directory(_Elsewhere())) {
        const FolderImage image = ReadFolder(_Elsewhere());
        std::error_code isNotEmpty;
        // What lies in a folder comes behind it.
        for (auto file = image.rbegin(); file != image.rend(); ++file) {
            retired.insert(file->second);
            fs::remove(_Elsewhere() + "/" + file->first, isNotEmpty);
        }
        fs::remove(_Elsewhere(), isNotEmpty);
    }
    retired.insert(service::test::ReadFile(_Elsewhere()).value_or(""));
    fs::remove(_Elsewhere());
}

void DiskWriter::Rename(const std::string& from, const std::string& to) {
    RenameAt(_At(from), _At(to), RENAME_NOREPLACE);
}

void DiskWriter::Touch(const std::string& path, std::chrono::seconds age) {
    std::filesystem::last_write_time(_At(path), std::filesystem::file_time_type::clock::now() - age);
}

}  // namespace syncproof
