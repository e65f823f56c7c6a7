#pragma once

#include <optional>

#include "client/sync/local/ILocalTree.h"

namespace ovsync {
namespace local {

/// The synced folder on the disk. Opens every folder of a path by its name, one after the other.
class LocalTree : public ILocalTree {
public:
    /// `root` is an absolute path, whose own links are followed. Throws LocalError when it is no folder.
    explicit LocalTree(const QString& root);
    ~LocalTree() override;
    LocalTree(const LocalTree&) = delete;
    LocalTree& operator=(const LocalTree&) = delete;

    QVector<NamedLocalEntry> List(const QString& folder) override;
    std::optional<LocalEntry> Look(const QString& path) override;
    std::unique_ptr<IReadableFile> Open(const QString& path) override;
    std::unique_ptr<IWritableFile> Create(const QString& path) override;
    std::unique_ptr<IWritableFile> Reopen(const QString& path) override;
    void MakeFolder(const QString& path) override;
    bool Move(const QString& from, const QString& to) override;
    bool Swap(const QString& a, const QString& b) override;
    void Remove(const QString& path) override;
    bool RemoveFolder(const QString& path) override;
    void SyncFolder(const QString& folder) override;
    void SyncAll() override;
    QString Identity() override;
    bool TellsCaseApart() override;
    bool TellsUnicodeFormsApart() override;

private:
    class Place;

    bool _IsSyncedWithAll(int file) const;
    /// Whether a file that is made as `made` in the hidden folder is not found as `asked`.
    bool _TellsApart(const char* made, const char* asked);

    const QString _rootPath;
    const int _root;
    /// The device of which syncfs is as good as fsync of each file; none where it is not.
    std::optional<quint64> _device;
};

}  // namespace local
}  // namespace ovsync
