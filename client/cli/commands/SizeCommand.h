#pragma once

#include <QStringList>

#include "client/cli/input/Location.h"
#include "client/cli/output/Output.h"
#include "client/library/ServiceConnection.h"

namespace ovsync {
namespace commands {

/// `ovsync du`: how many files there are in the tree of the folder at `location`, and how many bytes they have, without
/// those that one of the globs in `excluded` matches by their names or by the name of a folder below `location`. Throws
/// UsageError for a glob that is none, HttpException of status 404 when there is no such folder, and what the library
/// and the transaction with the service throw.
void MeasureTree(library::ServiceConnection& connection, const input::Location& location, const QStringList& excluded,
                 bool asJson, output::Output& output);

}  // namespace commands
}  // namespace ovsync
