#pragma once

#include <QByteArray>

#include "client/cli/output/Output.h"
#include "host/configuration/FileConfiguration.h"

namespace ovsync {
namespace output {

/// How the records of files are shown. Sizes of 2 GiB and more, which records hold as negative numbers, are shown as
/// they are up to 4 GiB; larger ones as ">=4294967295", in JSON as null. Dates are in UTC. Thread-safe.

/// One line: the size in bytes, the date of the last change, the version ("-" where the server counts none) and the
/// name.
QByteArray LongLine(const sync::config::FileConfiguration& file, const Output& output);

/// One line for each field that the record has.
QByteArray FieldLines(const sync::config::FileConfiguration& file, const Output& output);

/// One JSON object on one line, without a line feed.
QByteArray JsonObject(const sync::config::FileConfiguration& file);

}  // namespace output
}  // namespace ovsync
