#pragma once

#include <QString>

namespace ovsync {
namespace input {

/// Where `directory` is, with no links in its path. Throws UsageError when nothing is there.
QString AbsolutePath(const QString& directory);

}  // namespace input
}  // namespace ovsync
