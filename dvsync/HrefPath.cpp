#include "dvsync/HrefPath.h"

#include <QUrl>

#include "host/core/QtCompat.h"

namespace sync {
namespace dv {
namespace dvsync {

namespace {

bool IsHexDigit(ushort unit) {
    return (unit >= '0' && unit <= '9') || (unit >= 'A' && unit <= 'F') || (unit >= 'a' && unit <= 'f');
}

// Whether `href` is an absolute path of characters that stand for themselves, and escapes.
bool IsEscapedAbsolutePath(const QString& href) {
    const QChar* const begin = href.constData();
    const QChar* const end = begin + href.size();
    if (href.isEmpty() || *begin != QLatin1Char('/') || (end - begin > 1 && begin[1] == QLatin1Char('/'))) {
        return false;
    }
    for (const QChar* next = begin; next != end; ++next) {
        const ushort unit = next->unicode();
        if (unit == '%') {
            if (end - next < 3 || !IsHexDigit(next[1].unicode()) || !IsHexDigit(next[2].unicode())) {
                return false;
            }
        } else if (!((unit >= 'a' && unit <= 'z') || (unit >= '@' && unit <= 'Z') || (unit >= '&' && unit <= ';') ||
                     unit == '!' || unit == '$' || unit == '=' || unit == '_' || unit == '~')) {
            return false;
        }
    }
    return true;
}

}  // namespace

QString PercentDecoded(const QString& text) {
    return text.contains(QLatin1Char('%')) ? QUrl::fromPercentEncoding(text.toUtf8()) : text;
}

QString PathOfHref(const QString& href) {
    // What services send, read without the cost of taking a whole URL apart.
    if (IsEscapedAbsolutePath(href)) {
        return PercentDecoded(href);
    }
    // Qt would take what follows two slashes for a host, but the service means a path.
    int extraSlashes = 0;
    while (href.startsWith(QLatin1Char('/')) && extraSlashes + 1 < href.size() &&
           href.at(extraSlashes + 1) == QLatin1Char('/')) {
        ++extraSlashes;
    }
    return QString(extraSlashes, QLatin1Char('/')) + core::compat::DecodedPath(href.mid(extraSlashes).toUtf8());
}

QString WithoutLeadingSlash(const QString& path) {
    return path.startsWith(QLatin1Char('/')) ? path.mid(1) : path;
}

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
