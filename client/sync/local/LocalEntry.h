#pragma once

#include <QByteArray>
#include <QString>

#include "client/store/Fingerprint.h"

struct stat;

namespace ovsync {
namespace local {

/// What lies at one place of the synced folder. A plain value.
struct LocalEntry {
    enum class Kind {
        File,
        Folder,
        /// A symbolic link, a device and the like: never followed, read or replaced.
        Other
    };

    Kind kind = Kind::Other;
    store::Fingerprint fingerprint;
    /// The permission bits.
    unsigned mode = 0;
    /// A symbolic link, of what is Other.
    bool isLink = false;

    /// By its owner.
    bool IsExecutable() const { return (mode & 0100U) != 0; }
};

/// An entry by its name in its folder. A plain value.
struct NamedLocalEntry : LocalEntry {
    /// Where the name is not UTF-8, what can be shown of it.
    QString name;
    bool isUtf8 = true;
};

/// For people: "a file", "a folder" or what else it is.
QString KindText(const LocalEntry& entry);

/// For people: why no pass syncs what is Other.
QString SkippedText(const LocalEntry& entry);

/// For people: what lies here, and that something else lies on the service, which is a folder there or a file.
QString BlockedText(const LocalEntry& entry, bool isFolderThere);

/// `mode`, executable for all who may read it, or for nobody.
unsigned WithExecutableBit(unsigned mode, bool isExecutable);

/// What the system says of a file, as the passes see it.
LocalEntry EntryOf(const struct stat& status);

}  // namespace local
}  // namespace ovsync
