#pragma once

#include <QStringList>

#include "client/cli/Connection.h"
#include "client/cli/Output.h"

namespace ovsync {
namespace cli {

/// `ovsync du`: how many files there are in the tree of the folder at `location`, and how many bytes they have, without
/// those that one of the globs in `excluded` matches by their names or by the name of a folder below `location`. Throws
/// UsageError for a glob that is none, HttpException of status 404 when there is no such folder, and what the library
/// and the exchange with the service throw.
void MeasureTree(Connection& connection, const Location& location, const QStringList& excluded, bool asJson,
                 Output& output);

}  // namespace cli
}  // namespace ovsync
