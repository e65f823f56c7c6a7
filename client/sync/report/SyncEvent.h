#pragma once

#include <QString>
#include <exception>

namespace ovsync {
namespace report {

/// One thing that a pass did or found, or in a trial would have done. A plain value.
struct SyncEvent {
    enum class Kind {
        /// A file of the service that was not here.
        Fetched,
        /// A file here was replaced by the service's newer version.
        Updated,
        /// A file or folder was deleted here, because the service deleted it.
        Deleted,
        FolderMade,
        /// A file or folder of this side was brought to the service.
        Sent,
        FolderSent,
        /// A file or folder was moved to this path here, or on the service, because it was moved on the other side.
        Moved,
        MovedThere,
        /// A file or folder was deleted on the service, because it was deleted here.
        DeletedThere,
        /// A file that was deleted here, which the service still has, because nothing is to be deleted there.
        DeletedHere,
        /// The service has a newer version, which a pull will bring.
        NewerThere,
        /// What is neither a file nor a folder, and no pass ever syncs.
        Skipped,
        /// What turned out when the file was transferred, and concerns all of them.
        Noted,
        /// From here on: what somebody still has to do something about.
        /// Both sides changed the file.
        Conflict,
        /// The service deleted it; it was kept here.
        Kept,
        /// The file cannot be synced as it is.
        Refused,
        /// The service could not be reached or understood for this file.
        Failed,
        /// The other side deleted it. It goes by itself once everything else was transferred.
        Waiting
    };

    Kind kind;
    /// Below the synced folder.
    QString path;
    /// What a person should know besides; may be empty.
    QString detail;
    /// Of what was transferred.
    qint64 bytes = 0;
    /// What failed, where something did; `detail` is then its message.
    std::exception_ptr error = nullptr;

    bool IsProblem() const { return kind >= Kind::Conflict; }
};

}  // namespace report
}  // namespace ovsync
