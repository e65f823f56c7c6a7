#pragma once

#include <QString>

#include "client/sync/pass/ServiceFolder.h"
#include "client/sync/pass/SyncOptions.h"

namespace ovsync {
namespace pass {

/// The line to type for another pass between the same two folders: `command`, as "sync --max-delete 12", with the user,
/// the certificates, the patterns, the age of the trash and, of a sync, the way with conflicts that `service` and
/// `options` have. Thread-safe.
QString PassCommand(const QString& command, const ServiceFolder& service, const SyncOptions& options);

}  // namespace pass
}  // namespace ovsync
