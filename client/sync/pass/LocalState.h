#pragma once

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

}  // namespace pass
}  // namespace ovsync
