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
/// this come one after the other. `beforePlacing` is called when the new file is on the disk and only has to take its
/// place, unless there is nothing to change; it may edit another file. What either throws leaves all as it is.
void EditWholeFile(
    const QString& path, mode_t mode, const std::function<QByteArray(const QByteArray&)>& edit,
    const std::function<void()>& beforePlacing = [] {});

}  // namespace user
}  // namespace ovsync
