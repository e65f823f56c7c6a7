#pragma once

#include <QString>
#include <memory>
#include <optional>

#include "client/sync/local/LocalSnapshot.h"
#include "client/sync/pass/FileState.h"
#include "client/sync/pass/PassSides.h"
#include "client/sync/pass/RecordMaker.h"

namespace ovsync {
namespace pass {

/// Answers questions about the files of both sides. Changes neither these nor the records, and tells nobody. Throws
/// Cancelled, and LocalError when the disk as a whole fails. To be used on the pass's thread.
class FileComparison {
public:
    /// The arguments outlive this object.
    FileComparison(const PassSides& sides, const RecordMaker& maker) : _sides(sides), _maker(maker) {}

    /// The file here beside its record. Reads it where only its content can tell.
    LocalFileState CompareHere(const QString& path, const local::LocalSnapshot& snapshot,
                               const std::optional<store::FileRecord>& record) const;
    /// The service's file beside its record. Reads the service's content where the record knows no version for sure.
    RemoteFileState CompareThere(const sync::config::FileConfiguration& remote,
                                 const std::optional<store::FileRecord>& record) const;

    /// Reads the content of the file, which is left without a checksum when it cannot be read or is being written.
    void Read(const QString& path, LocalFileState& file) const;
    /// Whether the file here is known to have the content of the service's file; reads it where it must.
    bool HasContentOf(const QString& path, const sync::config::FileConfiguration& remote, LocalFileState& file) const;
    /// Whether the content of the service's file has that MD5. Reads all of it. Throws what
    /// IContentConnection::Download throws.
    bool IsContentThere(const sync::config::FileConfiguration& remote, const QString& md5) const;

private:
    /// Whether the service still has the content of the record, which knows no version.
    bool _HasContentOfRecord(const sync::config::FileConfiguration& remote, const store::FileRecord& record) const;

    const PassSides& _sides;
    const RecordMaker& _maker;
    /// For all contents that are read. Made when the first one is.
    mutable std::unique_ptr<content::IContentConnection> _connection;
};

}  // namespace pass
}  // namespace ovsync
