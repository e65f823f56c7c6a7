#pragma once

#include <QDateTime>
#include <QString>
#include <QVector>
#include <cstddef>
#include <memory>
#include <optional>

#include "client/sync/local/LocalEntry.h"

namespace ovsync {
namespace local {

/// A new file while it is written. What was written but not synced may be lost in a crash. Not thread-safe.
class IWritableFile {
public:
    virtual ~IWritableFile() = default;

    virtual void Write(const char* bytes, size_t size) = 0;
    /// Keeps the first `size` bytes alone, and goes on behind them.
    virtual void Truncate(qint64 size) = 0;
    /// An invalid time leaves the file's as it is.
    virtual void SetModified(const QDateTime& time) = 0;
    virtual void SetMode(unsigned mode) = 0;
    virtual void Sync() = 0;
    /// Whether the tree's SyncAll does as much as Sync.
    virtual bool IsSyncedWithAll() const = 0;
    virtual store::Fingerprint Look() = 0;
};

/// An open file. Not thread-safe.
class IReadableFile {
public:
    virtual ~IReadableFile() = default;

    /// 0 at the end.
    virtual size_t Read(char* bytes, size_t size) = 0;
    virtual void Rewind() = 0;
    virtual store::Fingerprint Look() = 0;
};

/// The synced folder: all that a pass does on the disk. Paths are relative to it, in UTF-8 on the disk, their segments
/// joined with '/'; the empty path is the folder itself. No operation ever follows a symbolic link or leaves the
/// folder. Every operation throws LocalError. Thread-safe; what it hands out is not.
class ILocalTree {
public:
    virtual ~ILocalTree() = default;

    /// In no order, without "." and "..".
    virtual QVector<NamedLocalEntry> List(const QString& folder) = 0;
    /// None where nothing is, and where something else is where a folder above it should be.
    virtual std::optional<LocalEntry> Look(const QString& path) = 0;

    [[nodiscard]] virtual std::unique_ptr<IReadableFile> Open(const QString& path) = 0;
    /// Throws when there is something.
    [[nodiscard]] virtual std::unique_ptr<IWritableFile> Create(const QString& path) = 0;
    /// Opens a file that Create made before; Truncate has to say where it goes on.
    [[nodiscard]] virtual std::unique_ptr<IWritableFile> Reopen(const QString& path) = 0;
    /// The folder that it lies in must be there. Throws when there is something.
    virtual void MakeFolder(const QString& path) = 0;

    /// Renames `from` to `to`, in one step. False, and nothing done, when there is something at `to`.
    [[nodiscard]] virtual bool Move(const QString& from, const QString& to) = 0;
    /// Lets the two change places, in one step. False, and nothing done, when the file system cannot do it.
    [[nodiscard]] virtual bool Swap(const QString& a, const QString& b) = 0;
    /// Of a file; nothing happens when there is none.
    virtual void Remove(const QString& path) = 0;
    /// False, and nothing done, when there is something in it.
    [[nodiscard]] virtual bool RemoveFolder(const QString& path) = 0;
    /// Flushes the names in `folder` to the disk.
    virtual void SyncFolder(const QString& folder) = 0;
    /// Flushes to the disk whatever was written to the file system that the folder itself lies on, by anyone.
    virtual void SyncAll() = 0;

    /// Differs for another folder, or another disk, at the place of this one. The same after a restart of the system.
    virtual QString Identity() = 0;

    /// Whether two names that differ in their letter case, or in their Unicode form alone, are two files here. Found
    /// out in the hidden folder, which must be there.
    virtual bool TellsCaseApart() = 0;
    virtual bool TellsUnicodeFormsApart() = 0;
};

}  // namespace local
}  // namespace ovsync
