#pragma once

#include <QByteArray>

#include "client/cli/output/Output.h"
#include "host/configuration/FolderConfiguration.h"

namespace ovsync {
namespace output {

/// How the records of folders are shown, in lines and objects like those of files. A name that is shown on a line ends
/// in '/'. Thread-safe.

/// One line: "-" for the size, the date of the last change, "-" for the version, and the name.
QByteArray LongLine(const sync::config::FolderConfiguration& folder, const Output& output);

/// One line for each field that the record has.
QByteArray FieldLines(const sync::config::FolderConfiguration& folder, const Output& output);

/// One JSON object on one line, without a line feed.
QByteArray JsonObject(const sync::config::FolderConfiguration& folder);

}  // namespace output
}  // namespace ovsync
