#include "client/cli/files/SentFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <array>
#include <cerrno>

#include "client/cli/input/UsageError.h"
#include "client/sync/local/LocalError.h"

namespace ovsync {
namespace files {

using input::UsageError;
using local::LocalError;

namespace {

const size_t InputPieceSize = 64UL * 1024UL;

}  // namespace

SentFile::SentFile(const QString& path) {
    if (path == QLatin1String("-")) {
        _TakeStandardInput();
    } else {
        _Open(path);
    }
    _before = _file->Look();
}

void SentFile::_Open(const QString& path) {
    const QFileInfo place(path);
    if (place.isDir()) {
        throw UsageError(QStringLiteral("%1 is a folder; push sends folders").arg(path));
    }
    if (place.exists() && !place.isFile()) {
        throw UsageError(QStringLiteral("%1 is no file that has a size").arg(path));
    }
    const int descriptor = open(path.toUtf8().constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        throw LocalError(path, errno);
    }
    _file = std::make_unique<local::LocalFile>(descriptor, path);
    _isExecutable = place.permission(QFile::ExeOwner);
}

void SentFile::_TakeStandardInput() {
    const QString folder = QDir::tempPath();
    const int descriptor =
        open(QFile::encodeName(folder).constData(), O_TMPFILE | O_RDWR | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor < 0) {
        throw LocalError(folder, errno);
    }
    _file = std::make_unique<local::LocalFile>(descriptor, folder);
    local::LocalFile input(dup(STDIN_FILENO), QStringLiteral("Standard input"));
    std::array<char, InputPieceSize> piece = {};
    while (const size_t count = input.Read(piece.data(), piece.size())) {
        _file->Write(piece.data(), count);
    }
}

bool SentFile::HasChanged() {
    return !_file->Look().IsUnchangedSince(_before);
}

void SentFile::Restart() {
    _md5.reset();
    _file->Rewind();
}

size_t SentFile::Read(char* bytes, size_t size) {
    const size_t count = _file->Read(bytes, size);
    _md5.addData(bytes, static_cast<int>(count));
    return count;
}

QDateTime SentFile::Modified() const {
    return _before.ModifiedDate();
}

}  // namespace files
}  // namespace ovsync
