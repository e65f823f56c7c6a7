#include "client/sync/pass/FileComparison.h"

#include <QCryptographicHash>

#include "client/sync/local/LocalContent.h"
#include "client/sync/local/LocalError.h"
#include "client/sync/pass/RemoteVersion.h"

namespace ovsync {
namespace pass {

using local::LocalContent;
using local::LocalEntry;
using local::LocalError;
using local::LocalSnapshot;
using local::Recordable;
using store::FileRecord;
using sync::config::FileConfiguration;

namespace {

/// Knows the MD5 of what was written into it.
class Md5Sink : public content::ContentSink {
public:
    class MoreThanListed {};

    explicit Md5Sink(qint64 listed) : _listed(listed) {}

    void Restart(qint64 size) override {
        _announced = size;
        _size = 0;
        _md5.reset();
    }
    void Write(const char* bytes, size_t size) override {
        _size += static_cast<qint64>(size);
        if (_size > SizeLimit(_listed, _announced)) {
            throw MoreThanListed();
        }
        _md5.addData(bytes, static_cast<int>(size));
    }
    QString Text() const { return QString::fromLatin1(_md5.result().toHex()); }

private:
    const qint64 _listed;
    qint64 _announced = -1;
    qint64 _size = 0;
    QCryptographicHash _md5{QCryptographicHash::Md5};
};

}  // namespace

LocalFileState FileComparison::CompareHere(const QString& path, const LocalSnapshot& snapshot,
                                           const std::optional<FileRecord>& record) const {
    LocalFileState file;
    const auto found = snapshot.entries.find(path);
    if (found == snapshot.entries.end()) {
        return file;
    }
    file.entry = *found;
    if (found->kind != LocalEntry::Kind::File) {
        file.state = found->kind == LocalEntry::Kind::Folder ? LocalState::Folder : LocalState::Other;
        return file;
    }
    if (!record) {
        file.state = LocalState::Unknown;
        return file;
    }
    if (found->fingerprint.IsUnchangedSince(record->local)) {
        file.state = LocalState::Unchanged;
        file.md5 = record->contentMd5;
        return file;
    }
    file.state = LocalState::Changed;
    if (found->fingerprint.size != record->local.size) {
        return file;
    }
    Read(path, file);
    if (!file.md5.isEmpty() && file.md5 == record->contentMd5) {
        file.state = LocalState::Unchanged;
        file.renewed = record;
        file.renewed->local = Recordable(file.entry->fingerprint);
    }
    return file;
}

RemoteFileState FileComparison::CompareThere(const FileConfiguration& remote,
                                             const std::optional<FileRecord>& record) const {
    RemoteFileState file;
    file.state = RemoteState::New;
    if (!record) {
        return file;
    }
    if (IsOlder(remote, record->file)) {
        file.state = RemoteState::Older;
        return file;
    }
    // The size is compared as listings have it: the library also records the true one, which needs more bits.
    FileConfiguration local = record->file;
    local.size = ListedSize(local.size);
    const bool isNew =
        !HasIdentity(remote, IdentityOf(local)) || _sides.service.files->ShouldDownloadFile(remote, local);
    try {
        if (isNew && !_HasContentOfRecord(remote, *record)) {
            return file;
        }
    } catch (const std::exception&) {
        file.failure = std::current_exception();
        return file;
    }
    file.state = RemoteState::Same;
    const bool isKnownBetter = isNew || IdentityOf(remote) != IdentityOf(local);
    if (!isKnownBetter) {
        return file;
    }
    file.renewed = _maker.Make(record->path, remote);
    file.renewed->local = record->local;
    file.renewed->contentMd5 = record->contentMd5;
    return file;
}

bool FileComparison::_HasContentOfRecord(const FileConfiguration& remote, const FileRecord& record) const {
    if (DiffersByMissingChecksum(remote, record.file)) {
        return IsContentOf(remote, LikelySize(ListedSize(record.file.size)), record.contentMd5);
    }
    const QString& version = record.file.versionId;
    const bool isInDoubt = (version.isEmpty() || IsWeakTag(version)) && record.file.md5Checksum.isEmpty() &&
                           !record.file.lastModifiedDate.isValid();
    return isInDoubt && ListedSize(remote.size) == ListedSize(record.file.size) &&
           (HasBecomeStrong(remote, version) || IsContentThere(remote, record.contentMd5));
}

void FileComparison::Read(const QString& path, LocalFileState& file) const {
    try {
        const std::optional<LocalContent> content = LocalContent::Of(_sides.tree, path, *_sides.options.isStopped);
        // Its permissions may have changed since it was looked at, too.
        const std::optional<LocalEntry> now = content ? _sides.tree.Look(path) : std::nullopt;
        if (now && now->kind == LocalEntry::Kind::File && now->fingerprint.IsUnchangedSince(content->fingerprint)) {
            file.md5 = content->md5;
            file.entry = now;
        }
    } catch (const LocalError& e) {
        // What cannot be read counts as changed, and so stays as it is.
        if (e.ConcernsWholeDisk()) {
            throw;
        }
    }
}

bool FileComparison::HasContentOf(const QString& path, const FileConfiguration& remote, LocalFileState& file) const {
    if (!IsContentOf(remote, file.entry->fingerprint.size, QString())) {
        return false;
    }
    if (remote.md5Checksum.isEmpty()) {
        // A date and a size tell nothing for sure.
        return false;
    }
    if (file.md5.isEmpty()) {
        Read(path, file);
    }
    return !file.md5.isEmpty() && IsContentOf(remote, file.entry->fingerprint.size, file.md5);
}

bool FileComparison::IsContentThere(const FileConfiguration& remote, const QString& md5) const {
    Md5Sink sink(remote.size);
    try {
        if (!_connection) {
            _connection = _sides.service.newConnection();
        }
        _connection->Download(_sides.service.urlOf(remote.serverPath), sink);
    } catch (const Md5Sink::MoreThanListed&) {
        return false;
    }
    return sink.Text() == md5;
}

}  // namespace pass
}  // namespace ovsync
