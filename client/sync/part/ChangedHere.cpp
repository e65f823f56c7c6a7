#include "client/sync/part/ChangedHere.h"

namespace ovsync {
namespace part {

using local::LocalEntry;

QSet<QString> ChangedHere(store::RecordDatabase& records, const local::Exclusion& exclusion,
                          const local::LocalSnapshot& snapshot) {
    QSet<QString> changed;
    int known = 0;
    records.ForEachFingerprint([&](const QString& path, const store::Fingerprint& fingerprint) {
        const auto entry = snapshot.entries.find(path);
        const bool isHere = entry != snapshot.entries.end() && entry->kind == LocalEntry::Kind::File;
        known += isHere ? 1 : 0;
        if (isHere ? !entry->fingerprint.IsUnchangedSince(fingerprint) : !exclusion.HasFileAt(path)) {
            changed.insert(path);
        }
    });
    for (const QString& path : records.Folders()) {
        const bool isHere = snapshot.HasFolder(path);
        known += isHere ? 1 : 0;
        if (!isHere && !exclusion.HasFolderAt(path)) {
            changed.insert(path);
        }
    }
    if (known + snapshot.Others().size() == snapshot.entries.size()) {
        return changed;
    }
    const QStringList files = records.FilePaths();
    QSet<QString> recorded(files.begin(), files.end());
    for (const QString& path : records.Folders()) {
        recorded.insert(path);
    }
    for (auto entry = snapshot.entries.begin(); entry != snapshot.entries.end(); ++entry) {
        if (entry->kind != LocalEntry::Kind::Other && !recorded.contains(entry.key())) {
            changed.insert(entry.key());
        }
    }
    return changed;
}

}  // namespace part
}  // namespace ovsync
