#pragma once

#include "client/cli/Connection.h"
#include "client/cli/Entries.h"
#include "client/cli/Output.h"

namespace ovsync {
namespace cli {

/// `ovsync ls`: the sub-folders and the files of the folder at `location`, in one name order. Nothing is written unless
/// the listing is whole. Throws what the library and the exchange with the service throw, and HttpException of status
/// 404 when there is no such folder.
void ListFolder(Connection& connection, const Location& location, ListFormat format, Output& output);

}  // namespace cli
}  // namespace ovsync
