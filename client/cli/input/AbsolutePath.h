#pragma once

#include <QString>

namespace ovsync {
namespace input {

/// Where `directory` is, with no links in its path. Throws UsageError when nothing is there.
QString AbsolutePath(const QString& directory);

/// Throws UsageError when a folder at `directory`, which may be missing, may not be synced.
void RequireSyncable(const QString& directory);

}  // namespace input
}  // namespace ovsync
