#pragma once

#include <QByteArray>
#include <QString>

#include "client/content/ContentVersion.h"
#include "client/store/ConflictCopy.h"
#include "host/configuration/FileConfiguration.h"

/// How one version of a service's file is known from another. Thread-safe.

namespace ovsync {
namespace pass {

/// The strong entity tag by which a server knows the file's version that names neither versions nor checksums; empty
/// when there is none.
QByteArray EntityTagOf(const sync::config::FileConfiguration& file);

/// Whether it is the weak entity tag that a fetched content came with, as some servers have it within the second of the
/// last change. Only records have that in place of a version.
bool IsWeakTag(const QString& versionId);

/// Whether the strong entity tag of `file` is what `weakTag` has become.
bool HasBecomeStrong(const sync::config::FileConfiguration& file, const QString& weakTag);

/// What an upload that replaces `file` can make its condition: its entity tag, else its date.
content::ContentVersion KnownVersionOf(const sync::config::FileConfiguration& file);

/// Whether the item id was made up from the path, for a server that has none, and so names no file or folder once it
/// was moved; also when it is empty.
bool IsMadeUpId(const QString& itemId);

/// Differs between two versions of a file, and between a file and one that was made in its place later. On a server
/// that names neither versions nor checksums nor strong entity tags, the date and the size have to do.
QString IdentityOf(const sync::config::FileConfiguration& file);

/// Whether the service names the same version for both, and only one has a checksum: it may be computed later.
bool DiffersByMissingChecksum(const sync::config::FileConfiguration& file,
                              const sync::config::FileConfiguration& known);

/// Whether `identity` is that of `file`, also as it was known when the server had no strong entity tag for it yet: some
/// have none within the second of the last change.
bool HasIdentity(const sync::config::FileConfiguration& file, const QString& identity);

/// The same where only one of the two has a checksum: what was received of the version is a part of this one.
bool IsOfVersion(const sync::config::FileConfiguration& file, const QString& identity);

/// Whether `copy` is of this version; its checksum may have become known after the copy was made.
bool IsCopyOf(const sync::config::FileConfiguration& file, const store::ConflictCopy& copy);

/// Whether `file` is another version of the file that `known` is one of, and has a lower number.
bool IsOlder(const sync::config::FileConfiguration& file, const sync::config::FileConfiguration& known);

/// A size as a listing has it, in 32 bits with a sign: negative from 2 GiB on, -1 from 4 GiB on.
qint64 ListedSize(qint64 size);

/// The smallest size that a listing has as `listed`.
qint64 LikelySize(qint64 listed);

/// After how many bytes content is broken off that is to be what a listing has as `listed`. `announced` is its size as
/// the server announces it, -1 when it does not.
qint64 SizeLimit(qint64 listed, qint64 announced);

/// Whether content of `size` bytes can be what a listing describes as `file`; an empty `md5` is not looked at.
bool IsContentOf(const sync::config::FileConfiguration& file, qint64 size, const QString& md5);

}  // namespace pass
}  // namespace ovsync
