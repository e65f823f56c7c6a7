#pragma once

namespace ovsync {
namespace pass {

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

}  // namespace pass
}  // namespace ovsync
