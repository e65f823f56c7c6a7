#pragma once

#include <QString>

namespace ovsync {
namespace cli {

/// Where `directory` is, with no links in its path. Throws UsageError when nothing is there.
QString AbsolutePath(const QString& directory);

}  // namespace cli
}  // namespace ovsync
