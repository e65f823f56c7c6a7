#pragma once

#include <QString>

#include "client/sync/pass/ServiceFolder.h"
#include "client/sync/pass/SyncOptions.h"

namespace ovsync {
namespace pass {

/// The line to type for another pass between the same two folders: `command`, as "sync --max-delete 12", with the user,
/// the certificates, the patterns and the age of the trash that `service` and `options` have. Thread-safe.
QString PassCommand(const QString& command, const ServiceFolder& service, const SyncOptions& options);

}  // namespace pass
}  // namespace ovsync
