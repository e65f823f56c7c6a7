#pragma once

#include "client/cli/Connection.h"
#include "client/cli/Output.h"
#include "host/interfaces/IVersionManager.h"

namespace ovsync {
namespace cli {

/// The version of the application here, the newest one that the service offers, where its installer is, and whether it
/// is newer: a line for each, or a JSON object.
QByteArray VersionReport(const std::shared_ptr<sync::interf::IVersionManager>& versions, bool asJson,
                         const Output& output);

/// `ovsync version`: the report of what the service publishes. Throws what Connection::FetchSyncConfig throws.
void ShowVersions(Connection& connection, bool asJson, Output& output);

}  // namespace cli
}  // namespace ovsync
