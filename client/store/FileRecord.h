#pragma once

#include <QString>

#include "client/store/Fingerprint.h"
#include "host/configuration/FileConfiguration.h"

namespace ovsync {
namespace store {

/// What is remembered of a file that was the same here and on the service. A plain value.
struct FileRecord {
    /// Below the synced folder, its segments joined with '/'.
    QString path;
    /// As the library knows the service's file, without its local path and its links.
    sync::config::FileConfiguration file;
    /// The local file when its content was that.
    Fingerprint local;
    /// Of the content, in hexadecimal.
    QString contentMd5;
};

}  // namespace store
}  // namespace ovsync
