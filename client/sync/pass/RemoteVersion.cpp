#include "client/sync/pass/RemoteVersion.h"

#include <limits>

namespace ovsync {
namespace pass {

using sync::config::FileConfiguration;

namespace {

QString IdentityByDate(const FileConfiguration& file) {
    return QString::number(file.lastModifiedDate.isValid() ? file.lastModifiedDate.toMSecsSinceEpoch() : -1) +
           QLatin1Char('\n') + QString::number(ListedSize(file.size));
}

/// Whether only one of the identities has a checksum.
bool DiffersByChecksumAlone(const QString& identity, const QString& other) {
    const QString& shorter = identity.size() < other.size() ? identity : other;
    const QString& longer = identity.size() < other.size() ? other : identity;
    return shorter.endsWith(QLatin1Char('\n')) && longer.startsWith(shorter) &&
           !longer.midRef(shorter.size()).contains(QLatin1Char('\n'));
}

}  // namespace

QByteArray EntityTagOf(const FileConfiguration& file) {
    const bool isTag = file.md5Checksum.isEmpty() && file.versionId.startsWith(QLatin1Char('"'));
    return isTag ? file.versionId.toUtf8() : QByteArray();
}

bool IsWeakTag(const QString& versionId) {
    return versionId.startsWith(QLatin1String("W/\""));
}

bool HasBecomeStrong(const FileConfiguration& file, const QString& weakTag) {
    return IsWeakTag(weakTag) && !EntityTagOf(file).isEmpty() && file.versionId == weakTag.mid(2);
}

content::ContentVersion KnownVersionOf(const FileConfiguration& file) {
    content::ContentVersion version;
    version.entityTag = EntityTagOf(file);
    version.lastModified = file.lastModifiedDate;
    return version;
}

bool IsMadeUpId(const QString& itemId) {
    return itemId.isEmpty() || itemId.startsWith(QLatin1String("path:"));
}

QString IdentityOf(const FileConfiguration& file) {
    if (!file.versionId.isEmpty() || !file.md5Checksum.isEmpty()) {
        const QString itemId = IsMadeUpId(file.itemId) ? QString() : file.itemId;
        return itemId + QLatin1Char('\n') + file.versionId + QLatin1Char('\n') + file.md5Checksum.toLower();
    }
    return IdentityByDate(file);
}

bool HasIdentity(const FileConfiguration& file, const QString& identity) {
    const bool isDated = !EntityTagOf(file).isEmpty() && file.lastModifiedDate.isValid();
    return identity == IdentityOf(file) || (isDated && identity == IdentityByDate(file));
}

bool IsOfVersion(const FileConfiguration& file, const QString& identity) {
    return HasIdentity(file, identity) ||
           (!file.versionId.isEmpty() && DiffersByChecksumAlone(identity, IdentityOf(file)));
}

bool DiffersByMissingChecksum(const FileConfiguration& file, const FileConfiguration& known) {
    return !file.versionId.isEmpty() && file.itemId == known.itemId && file.versionId == known.versionId &&
           file.md5Checksum.isEmpty() != known.md5Checksum.isEmpty();
}

bool IsCopyOf(const FileConfiguration& file, const store::ConflictCopy& copy) {
    return HasIdentity(file, copy.identity) || file.md5Checksum.compare(copy.contentMd5, Qt::CaseInsensitive) == 0;
}

bool IsOlder(const FileConfiguration& file, const FileConfiguration& known) {
    const QString key = QStringLiteral("version");
    bool hasNumber = false;
    bool hasKnownNumber = false;
    const qint64 number = file.customProperties.value(key).toLongLong(&hasNumber);
    const qint64 knownNumber = known.customProperties.value(key).toLongLong(&hasKnownNumber);
    // Servers without versions have all files at 0.
    return hasNumber && hasKnownNumber && number > 0 && number < knownNumber && !file.itemId.isEmpty() &&
           file.itemId == known.itemId && IdentityOf(file) != IdentityOf(known);
}

qint64 ListedSize(qint64 size) {
    if (size > std::numeric_limits<quint32>::max()) {
        return -1;
    }
    return size > std::numeric_limits<qint32>::max() ? size - (Q_INT64_C(1) << 32) : size;
}

qint64 LikelySize(qint64 listed) {
    return listed < 0 ? listed + (Q_INT64_C(1) << 32) : listed;
}

qint64 SizeLimit(qint64 listed, qint64 announced) {
    // Enough to tell that it is more.
    const qint64 excess = qint64(64) * 1024;
    if (announced >= 0 && ListedSize(announced) == ListedSize(listed)) {
        return announced;
    }
    // Where a listing only says "4 GiB or more", there is nothing to go by.
    return ListedSize(listed) == -1 ? std::numeric_limits<qint64>::max() : LikelySize(listed) + excess;
}

bool IsContentOf(const FileConfiguration& file, qint64 size, const QString& md5) {
    const bool isSized = ListedSize(size) == ListedSize(file.size);
    return isSized &&
           (md5.isEmpty() || file.md5Checksum.isEmpty() || md5.compare(file.md5Checksum, Qt::CaseInsensitive) == 0);
}

}  // namespace pass
}  // namespace ovsync
