#pragma once

#include <QVector>

#include "client/cli/output/Output.h"
#include "host/configuration/FileConfiguration.h"
#include "host/configuration/FolderConfiguration.h"

namespace ovsync {
namespace output {

enum class ListFormat { Names, Long, Json };

/// Writes `folders` and `files`, each in name order, as one list in name order: a line for each, or a JSON array. The
/// name of a folder on a line ends in '/'. Throws what Output throws.
void WriteEntries(const QVector<sync::config::FolderConfiguration>& folders,
                  const QVector<sync::config::FileConfiguration>& files, ListFormat format, Output& output);

}  // namespace output
}  // namespace ovsync
