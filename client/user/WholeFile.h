#pragma once

#include <sys/types.h>

#include <QByteArray>
#include <QString>
#include <functional>

/// Files that people edit, too: whoever reads one, or crashes, has the old one or the new one whole. Throws
/// local::LocalError.

namespace ovsync {
namespace user {

/// Empty when there is no such file.
QByteArray ReadWholeFile(const QString& path);

/// Replaces the file by what `edit` makes of it, and makes it, with `mode`, where it is missing. One that is there
/// keeps its mode but for the bits that `mode` lacks. A link stays one: what it leads to is replaced. Editors that use
/// this come one after the other. What `edit` throws leaves all as it is.
void EditWholeFile(const QString& path, mode_t mode, const std::function<QByteArray(const QByteArray&)>& edit);

}  // namespace user
}  // namespace ovsync
