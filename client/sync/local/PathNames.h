#pragma once

#include <QString>

/// Which names a synced folder can have, and those that the passes make up. Thread-safe.

namespace ovsync {
namespace local {

/// Why nothing may be stored under `name`, the name of a file or a folder; empty when it may.
QString ReasonAgainst(const QString& name);
/// Why nothing may be stored at `path` below the synced folder; empty when it may.
QString ReasonAgainstPath(const QString& path);

/// Why the folder at the absolute `path` may not be synced; empty when it may.
QString ReasonAgainstRoot(const QString& path);

/// A new name for a temporary file beside `path`, as a path.
QString TemporaryBeside(const QString& path);
/// Whether TemporaryBeside made up the name.
bool IsTemporaryName(const QString& name);

/// A path beside `path` whose name says what is special about the file: "a (note).txt", and from the second `number` on
/// "a (note 2).txt". The name is shortened where it would be too long.
QString PathWithNote(const QString& path, const QString& note, int number);

/// What to tell of a file whose other version lies at `copy`.
QString ConflictText(const QString& copy);

/// The folder that `path` lies in, empty for the synced folder itself; and its last segment.
QString FolderOf(const QString& path);
QString NameOf(const QString& path);

/// Equal for two paths that are one file where neither letter case nor Unicode form (unless it `tellsCaseApart` or
/// `tellsFormsApart`) tells names apart.
QString FoldedPath(const QString& path, bool tellsCaseApart, bool tellsFormsApart);

}  // namespace local
}  // namespace ovsync
