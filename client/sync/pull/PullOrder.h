#pragma once

#include <QString>
#include <optional>

#include "client/store/FileRecord.h"
#include "client/store/PartialDownload.h"
#include "client/sync/local/LocalEntry.h"
#include "client/wire/FileAttributes.h"
#include "host/configuration/FileConfiguration.h"

namespace ovsync {
namespace pull {

/// A file that is to be fetched. A plain value.
struct PullOrder {
    enum class Target {
        /// Nothing is there.
        New,
        /// In place of `here`, whose content is that of its record, or has lost a conflict.
        Replace,
        /// Beside `here`, which holds what the service never had.
        Beside,
        /// Into the trash, because `here` is going to replace it there.
        Trash
    };

    /// Whether `here` may hold the same, so that nothing is to be done.
    bool IsCompared() const { return target == Target::Beside || target == Target::Trash || hasLost; }

    QString path;
    sync::config::FileConfiguration remote;
    /// What the service says in another place than with the content.
    wire::FileAttributes attributes;
    /// What is to be recorded of it, its local part left open. Made when the transfer begins.
    store::FileRecord record;
    Target target = Target::New;
    /// Whether `here` is to be replaced although it holds what the service never had.
    bool hasLost = false;
    std::optional<local::LocalEntry> here;
    /// Of the content of `here`, in hexadecimal; empty when nobody knows.
    QString md5Here;
    /// What an earlier pass has left of a download of this version.
    std::optional<store::PartialDownload> part;
    /// How many times it was fetched before, and had changed meanwhile.
    int attempts = 0;
};

}  // namespace pull
}  // namespace ovsync
