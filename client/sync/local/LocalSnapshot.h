#pragma once

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>

#include "client/sync/local/Exclusion.h"
#include "client/sync/local/ILocalTree.h"
#include "client/sync/report/SyncEvent.h"

namespace ovsync {
namespace local {

/// What lay in a synced folder when it was looked through. A plain value.
struct LocalSnapshot {
    /// By their paths; without what is excluded, temporary and hidden.
    QHash<QString, LocalEntry> entries;
    /// Whether any of them may be neither a file nor a folder.
    bool hasOthers = false;
    /// Leftovers of a pass that died, and of nobody else.
    QStringList temporaryFiles;
    /// What no pass can sync, with the reason.
    QVector<report::SyncEvent> refused;
    /// The folders that no pass looks into, with the reason: nobody knows what lies in them.
    QVector<report::SyncEvent> closed;

    /// Whether there is a folder at `path`; the synced folder itself is one.
    bool HasFolder(const QString& path) const { return path.isEmpty() || Has(path, LocalEntry::Kind::Folder); }
    bool Has(const QString& path, LocalEntry::Kind kind) const;

    /// Where there is neither a file nor a folder.
    QStringList Others() const;

    /// What was at `from`, with everything in it, is at `to` now, where nothing was.
    void Move(const QString& from, const QString& to);

    /// The same of these places alone.
    LocalSnapshot Of(const QSet<QString>& places) const;

    /// Throws LocalError.
    static LocalSnapshot Of(ILocalTree& tree, const Exclusion& exclusion);
    /// Only of these places, among which are the folders that they lie in; of those in `whole` with all that lies below
    /// them. Throws LocalError.
    static LocalSnapshot OfPlaces(ILocalTree& tree, const Exclusion& exclusion, const QSet<QString>& places,
                                  const QSet<QString>& whole);
};

}  // namespace local
}  // namespace ovsync
