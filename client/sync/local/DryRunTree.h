#pragma once

#include <QString>
#include <map>
#include <optional>

#include "client/sync/local/ILocalTree.h"

namespace ovsync {
namespace local {

/// A synced folder in which nothing changes, although to whoever works in it everything has. No file can be created,
/// for its content would have to be somewhere. Not thread-safe.
class DryRunTree : public ILocalTree {
public:
    /// `tree` outlives this object.
    explicit DryRunTree(ILocalTree& tree) : _tree(tree) {}

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
    QString Identity() override { return _tree.Identity(); }
    /// That cannot be found out without a file.
    bool TellsCaseApart() override { return true; }
    bool TellsUnicodeFormsApart() override { return true; }

private:
    /// What lies at a place now.
    struct Moved {
        LocalEntry entry;
        /// Where it lies on the disk; empty for a folder that was made.
        QString origin;
    };

    ILocalTree& _tree;
    /// By the paths of all places that changed; none where nothing is any more.
    std::map<QString, std::optional<Moved>> _changes;
};

}  // namespace local
}  // namespace ovsync
