#pragma once

#include <QMap>
#include <QSet>
#include <QString>
#include <QVector>

#include "client/changes/ServiceChanges.h"
#include "client/sync/pass/PassSides.h"

namespace ovsync {
namespace part {

/// What the service has at some places, put together of what it says has changed and of what is recorded of the rest.
/// For one pass. Not thread-safe.
class ServicePart {
public:
    /// `sides` outlives this object.
    explicit ServicePart(const pass::PassSides& sides) : _sides(sides) {}

    /// False when nobody can tell from these changes what the service has: then everything has to be listed.
    [[nodiscard]] bool Add(const changes::ServiceChanges& changes);
    /// The same for what was looked at by its path, of which a folder tells nothing about what lies in it.
    [[nodiscard]] bool AddLookedAt(const changes::ServiceChanges& looked);

    /// Of what changed, and of what was recorded in what is gone.
    QSet<QString> Paths() const;
    /// Whether the service told of `path`.
    bool Tells(const QString& path) const;

    /// What is there of the pass's scope. A folder comes before those in it.
    QVector<sync::config::FolderConfiguration> Folders() const;
    QVector<sync::config::FileConfiguration> Files() const;

private:
    /// Finds what is gone from the folders that were told whole.
    bool _AddWhole(const changes::ServiceChanges& changes);
    bool _AddFolder(const sync::config::FolderConfiguration& folder);
    bool _AddFile(const sync::config::FileConfiguration& file);
    void _AddGone(const QString& path);
    /// Whether the folders are known in which everything lies that was told of.
    bool _HasAllFolders() const;
    bool _HasFolder(const QString& path) const;

    const pass::PassSides& _sides;
    QMap<QString, sync::config::FolderConfiguration> _folders;
    QMap<QString, sync::config::FileConfiguration> _files;
    /// With all that was recorded in it.
    QSet<QString> _gone;
};

}  // namespace part
}  // namespace ovsync
