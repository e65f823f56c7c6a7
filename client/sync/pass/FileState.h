#pragma once

#include <QString>
#include <exception>
#include <optional>

#include "client/store/FileRecord.h"
#include "client/sync/local/LocalEntry.h"

/// What a comparison says of a file.

namespace ovsync {
namespace pass {

/// What is at a place of the synced folder, seen beside its record.
enum class LocalState {
    Nothing,
    /// A file whose content is that of its record.
    Unchanged,
    /// A file that has a record and was written since.
    Changed,
    /// A file without a record.
    Unknown,
    Folder,
    /// A symbolic link, a device and the like.
    Other
};

/// What the service has of a name, seen beside the record of the local file.
enum class RemoteState {
    Nothing,
    /// The file that the record is of.
    Same,
    /// A file, and it is another version than that of the record, or there is no record.
    New,
    /// A version of the file that the record is of that is older than that: the service was restored from a backup.
    Older,
    Folder
};

/// A plain value.
struct LocalFileState {
    LocalState state = LocalState::Nothing;
    std::optional<local::LocalEntry> entry;
    /// Of the content, in hexadecimal, where it was known or had to be read.
    QString md5;
    /// The record as it should be from now on; none when it may stay as it is.
    std::optional<store::FileRecord> renewed;
};

/// A plain value.
struct RemoteFileState {
    RemoteState state = RemoteState::Nothing;
    /// The record as it should be from now on; none when it may stay as it is.
    std::optional<store::FileRecord> renewed;
    /// Why the service's content, which should have been compared, could not be read; null mostly.
    std::exception_ptr failure;
};

}  // namespace pass
}  // namespace ovsync
