#include "client/listing/CollectionTag.h"

namespace ovsync {
namespace listing {

QString CollectionTag(const QString& id, const QString& fileId, const QString& entityTag) {
    const QString& known = id.isEmpty() ? fileId : id;
    const QStringRef quoted = entityTag.midRef(entityTag.startsWith(QLatin1String("W/")) ? 2 : 0);
    const bool isTag = quoted.size() > 2 && quoted.startsWith(QLatin1Char('"')) && quoted.endsWith(QLatin1Char('"'));
    return isTag && !known.isEmpty() ? known + QLatin1Char(' ') + entityTag : QString();
}

}  // namespace listing
}  // namespace ovsync
