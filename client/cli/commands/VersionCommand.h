#pragma once

#include "client/cli/commands/CommandRegistry.h"
#include "client/cli/output/Output.h"
#include "host/interfaces/IVersionManager.h"

namespace ovsync {
namespace commands {

/// The version of the application here, the newest one that the service offers, where its installer is, and whether it
/// is newer: a line for each, or a JSON object.
QByteArray VersionReport(const std::shared_ptr<sync::interf::IVersionManager>& versions, bool asJson,
                         const output::Output& output);

/// `ovsync version`: the report of what the service publishes. Throws what ServiceConnection::FetchSyncConfig throws.
void AddVersionCommand(CommandRegistry& registry);

}  // namespace commands
}  // namespace ovsync
