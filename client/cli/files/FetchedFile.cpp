#include "client/cli/files/FetchedFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <cstdio>
#include <vector>

#include "client/cli/input/Refusal.h"
#include "client/sync/local/LocalError.h"
#include "dvsync/TransferTexts.h"

namespace ovsync {
namespace files {

using content::ContentPart;
using content::ContentVersion;
using local::LocalError;

namespace {

const size_t PieceSize = 256UL * 1024UL;
const int TagLimit = 64 * 1024;

/// The path of a hidden file beside `path` that is always the same for `purpose`.
QString HiddenBeside(const QString& path, const QUrl& url, const char* purpose) {
    const QFileInfo place(path);
    QCryptographicHash hash(QCryptographicHash::Md5);
    for (const QByteArray& part :
         {url.toEncoded(QUrl::RemoveUserInfo), place.fileName().toUtf8(), QByteArray(purpose)}) {
        hash.addData(part + '\0');
    }
    return place.path() + QStringLiteral("/.") + QString::fromLatin1(hash.result().toHex()) +
           sync::dv::dvsync::SyncTempSuffix;
}

QByteArray OnDisk(const QString& path) {
    return path.toUtf8();
}

bool IsAt(int descriptor, const QString& path) {
    struct stat open {};
    struct stat named {};
    return fstat(descriptor, &open) == 0 && lstat(OnDisk(path).constData(), &named) == 0 &&
           open.st_ino == named.st_ino && open.st_dev == named.st_dev;
}

}  // namespace

FetchedFile::FetchedFile(const QString& path, const QUrl& url)
    : _path(path), _partPath(HiddenBeside(path, url, "part")), _recordPath(HiddenBeside(path, url, "record")) {
    _Open();
    struct stat replaced {};
    // Before anything of the content is in it.
    if (stat(OnDisk(_path).constData(), &replaced) == 0) {
        _file->SetMode(replaced.st_mode & 07777U);
    }
    _ReadRecord();
}

FetchedFile::~FetchedFile() {
    if (!_isInstalled && !CanGoOn()) {
        unlink(OnDisk(_partPath).constData());
        unlink(OnDisk(_recordPath).constData());
    }
}

void FetchedFile::_Open() {
    while (true) {
        _descriptor = open(OnDisk(_partPath).constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0666);
        if (_descriptor < 0) {
            throw LocalError(_path, errno);
        }
        _file = std::make_unique<local::LocalFile>(_descriptor, _path);
        if (flock(_descriptor, LOCK_EX | LOCK_NB) != 0) {
            throw input::Refusal(QStringLiteral("%1: another process is fetching it").arg(_path));
        }
        // Whoever had it open before may have put it in its place meanwhile.
        if (IsAt(_descriptor, _partPath)) {
            return;
        }
    }
}

void FetchedFile::_ReadRecord() {
    QFile record(_recordPath);
    if (!record.open(QIODevice::ReadOnly)) {
        return;
    }
    const QByteArray tag = record.read(TagLimit);
    if (tag.size() < 2 || !tag.startsWith('"') || !tag.endsWith('"')) {
        return;
    }
    std::vector<char> piece(PieceSize);
    while (const size_t count = _file->Read(piece.data(), piece.size())) {
        Count(piece.data(), count);
    }
    _recordedTag = tag;
}

ContentPart FetchedFile::Received() {
    return CanGoOn() ? ContentPart{Size(), _recordedTag} : ContentPart();
}

void FetchedFile::TakeVersion(const ContentVersion& version) {
    _version = version;
}

void FetchedFile::Clear() {
    Discard();
    _WriteRecord();
}

void FetchedFile::Keep(const char* bytes, size_t size) {
    _file->Write(bytes, size);
}

void FetchedFile::Discard() {
    _file->Truncate();
    CountAnew();
    _recordedTag.clear();
}

void FetchedFile::_WriteRecord() {
    const QByteArray& tag = _version.entityTag;
    if (tag.isEmpty()) {
        unlink(OnDisk(_recordPath).constData());
        return;
    }
    QFile record(_recordPath);
    if (!record.open(QIODevice::WriteOnly) || record.write(tag) != tag.size() || !record.flush()) {
        throw sync::core::SyncException(QStringLiteral("%1: %2").arg(_recordPath, record.errorString()));
    }
    _recordedTag = tag;
}

void FetchedFile::Install(const QDateTime& modified, std::optional<bool> isExecutable) {
    _file->SetModified(modified);
    struct stat status {};
    const std::optional<bool> bit = _version.isExecutable ? _version.isExecutable : isExecutable;
    if (bit && fstat(_descriptor, &status) == 0) {
        _file->SetMode(local::WithExecutableBit(status.st_mode & 07777U, *bit));
    }
    _file->Sync();
    if (rename(OnDisk(_partPath).constData(), OnDisk(_path).constData()) != 0) {
        throw LocalError(_path, errno);
    }
    _isInstalled = true;
    unlink(OnDisk(_recordPath).constData());
    // So that the name is on the disk, too, when a script goes on to remove the original.
    const int folder = open(OnDisk(QFileInfo(_path).path()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0) {
        fsync(folder);
        close(folder);
    }
}

}  // namespace files
}  // namespace ovsync
