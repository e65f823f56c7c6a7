#pragma once

#include "client/cli/input/Location.h"
#include "client/cli/output/ListingOutput.h"
#include "client/cli/output/Output.h"
#include "client/library/ServiceConnection.h"

namespace ovsync {
namespace commands {

/// `ovsync ls`: the sub-folders and the files of the folder at `location`, in one name order. Nothing is written unless
/// the listing is whole. Throws what the library and the transaction with the service throw, and HttpException of
/// status 404 when there is no such folder.
void ListFolder(library::ServiceConnection& connection, const input::Location& location, output::ListFormat format,
                output::Output& output);

}  // namespace commands
}  // namespace ovsync
