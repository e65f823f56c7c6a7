#include "client/sync/pass/RecordMaker.h"

#include "client/sync/local/LocalContent.h"
#include "client/sync/local/PathNames.h"

namespace ovsync {
namespace pass {

using local::FolderOf;
using local::Recordable;
using store::FileRecord;
using sync::config::FileConfiguration;

FileRecord RecordMaker::Make(const QString& path, const FileConfiguration& remote) const {
    FileRecord record;
    record.path = path;
    record.file = remote;
    _service.updater->UpdateCustomFileConfigBeforeDownload(_service.FolderAt(FolderOf(path)), record.file, remote);
    if (IsInDoubt(remote)) {
        record.file.lastModifiedDate = QDateTime();
    }
    return record;
}

FileRecord RecordMaker::Make(const QString& path, const FileConfiguration& remote, const LocalFileState& here) const {
    FileRecord record = Make(path, remote);
    record.local = Recordable(here.entry->fingerprint);
    record.contentMd5 = here.md5;
    return record;
}

bool RecordMaker::IsInDoubt(const FileConfiguration& remote) const {
    const bool hasDateAlone = remote.versionId.isEmpty() && remote.md5Checksum.isEmpty();
    return hasDateAlone && _listedAt.isValid() && remote.lastModifiedDate.isValid() &&
           remote.lastModifiedDate.toSecsSinceEpoch() >= _listedAt.toSecsSinceEpoch();
}

}  // namespace pass
}  // namespace ovsync
