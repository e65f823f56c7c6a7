#pragma once

#include <QByteArray>
#include <QStringList>
#include <QVector>
#include <optional>

#include "client/folders/SyncedFolder.h"

/// The folders file as text that people write, too: TOML, in UTF-8, with a [[folder]] block for each folder. Changes
/// leave all else, comments and order included, as it is. What a text names is looked at on the disk. Thread-safe.

namespace ovsync {
namespace folders {

/// What a text says.
struct FoldersReading {
    /// None when it could not be read.
    std::optional<QByteArray> text;
    /// In the order of the text; only to be relied on when there is no mistake.
    QVector<SyncedFolder> folders;
    /// Each begins with "line N: " where it has one.
    QStringList mistakes;
};

/// `home` stands for a leading "~" of a path.
FoldersReading ReadFolders(const QByteArray& text, const QString& home);

/// Without links, as far as it is there.
QString RealDirectory(const SyncedFolder& folder);

/// Why two folders cannot both be kept in step, because one lies in the other and is not left out there. Empty when
/// they can.
QString ReasonAgainstBoth(const SyncedFolder& one, const SyncedFolder& other);

/// `text` with a block for `folder` at its end.
QByteArray WithFolder(const QByteArray& text, const SyncedFolder& folder);

/// `text`, which has no mistake, without the block of the folder at `index`, or with that folder paused or not. Empty
/// when the folder is not written as a block of its own lines.
QByteArray WithoutFolder(const QByteArray& text, int index);
QByteArray WithPause(const QByteArray& text, int index, bool isPaused);

}  // namespace folders
}  // namespace ovsync
