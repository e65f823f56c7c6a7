#pragma once

#include <QString>
#include <chrono>

#include "host/configuration/FileConfiguration.h"

namespace ovsync {
namespace push {

/// A file that is to be sent, or to be deleted on the service. A plain value.
struct PushOrder {
    /// So much may be sent twice, in bytes.
    static constexpr qint64 TrialSize = qint64(64) * 1024;

    QString path;
    /// Whether the service's file is to be deleted, and not to be replaced.
    bool isRemoval = false;
    /// Whether the service has no such file.
    bool isNew = true;
    /// What the service has otherwise, and is to be replaced or deleted.
    sync::config::FileConfiguration remote;
    /// The MD5 of the content that is to be replaced, as it was seen last, in hexadecimal.
    QString knownMd5;
    /// What is to be replaced is not looked at earlier: by its date alone it is known only once the second of that is
    /// over.
    std::chrono::steady_clock::time_point notBefore;
    /// Whether what the service has is looked at once more right before the file is sent, because the server may not
    /// know conditions.
    bool looksBefore = false;
    /// Whether it is then sent a second time, to see whether the server refuses what its condition forbids.
    bool triesConditions = false;
    /// Of the local file when it was looked at, in bytes.
    qint64 size = 0;
    bool isExecutable = false;
    /// Whether what the service has otherwise is executable, as far as it says so.
    bool isExecutableThere = false;

    /// Whether nobody else is to change the service's file meanwhile. The service itself sees to that.
    bool IsToBeLocked() const { return looksBefore && !isNew && !isRemoval; }
    /// Whether it may be sent twice.
    bool IsFitForTrial() const { return looksBefore && isNew && size > 0 && size <= TrialSize; }
};

}  // namespace push
}  // namespace ovsync
