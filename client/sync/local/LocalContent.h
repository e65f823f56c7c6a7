#pragma once

#include <QString>
#include <atomic>
#include <optional>

#include "client/sync/local/ILocalTree.h"

namespace ovsync {
namespace local {

/// The content of a file of the synced folder, as it was read. A plain value.
struct LocalContent {
    /// In hexadecimal.
    QString md5;
    store::Fingerprint fingerprint;

    /// None when the file is gone or was written meanwhile. Throws LocalError, and Cancelled.
    static std::optional<LocalContent> Of(ILocalTree& tree, const QString& path, const std::atomic<bool>& isStopped);
};

/// `fingerprint`, taken when the content was known, as it may be recorded: without the time of the last change when a
/// file was written so recently that it could be written again without its times telling.
store::Fingerprint Recordable(store::Fingerprint fingerprint);

}  // namespace local
}  // namespace ovsync
