#include "dvsync/HrefPath.h"

#include <QUrl>
#include <algorithm>

#include "host/core/QtCompat.h"

namespace sync {
namespace dv {
namespace dvsync {

namespace {

bool IsHexDigit(ushort unit) {
    return (unit >= '0' && unit <= '9') || (unit >= 'A' && unit <= 'F') || (unit >= 'a' && unit <= 'f');
}

bool IsSchemeCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '+' || c == '-' ||
           c == '.';
}

// Whether decoding leaves `unit` as it is, whatever stands beside it.
bool StandsForItself(QChar unit) {
    return unit.unicode() < 0x80 && unit != QLatin1Char('%');
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

// Qt 5 decodes no escape at all of a text that has one '%' too many.
QByteArray WithEveryPercentEscaping(const QByteArray& href) {
    QByteArray escaped;
    escaped.reserve(href.size());
    for (int i = 0; i < href.size(); ++i) {
        escaped += href.at(i);
        if (href.at(i) == '%' && (i + 2 >= href.size() || !IsHexDigit(static_cast<uchar>(href.at(i + 1))) ||
                                  !IsHexDigit(static_cast<uchar>(href.at(i + 2))))) {
            escaped += "25";
        }
    }
    return escaped;
}

// A relative href may have a colon in its first segment, but no URL without a scheme may in Qt 5.
QByteArray WithScheme(const QByteArray& href) {
    int end = 0;
    while (end < href.size() && IsSchemeCharacter(href.at(end))) {
        ++end;
    }
    if (end == href.size() || href.at(end) != ':') {
        return "x:" + href;
    }
    return end == 0 ? "x" + href : href;
}

// Four digits are a port whatever they are, and Qt 5 takes no number above 65535 for one.
QByteArray WithShortPort(QByteArray url) {
    const int authority = url.indexOf(':') + 1;
    if (url.mid(authority, 2) != "//") {
        return url;
    }
    int end = authority + 2;
    while (end < url.size() && url.at(end) != '/' && url.at(end) != '?' && url.at(end) != '#') {
        ++end;
    }
    int port = end;
    while (url.at(port - 1) >= '0' && url.at(port - 1) <= '9') {
        --port;
    }
    if (url.at(port - 1) == ':' && end - port > 4) {
        url.remove(port + 4, end - port - 4);
    }
    return url;
}

}  // namespace

QString PercentDecoded(const QString& text) {
    return std::all_of(text.begin(), text.end(), StandsForItself) ? text : QUrl::fromPercentEncoding(text.toUtf8());
}

std::optional<QString> PathOfHref(const QString& href) {
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
    const QByteArray escaped = WithEveryPercentEscaping(href.mid(extraSlashes).toUtf8());
    const QUrl url = QUrl::fromEncoded(WithShortPort(WithScheme(escaped)));
    if (href.isEmpty() || !url.isValid()) {
        return std::nullopt;
    }
    return QString(extraSlashes, QLatin1Char('/')) + core::compat::DecodedPath(url);
}

QString WithoutLeadingSlash(const QString& path) {
    return path.startsWith(QLatin1Char('/')) ? path.mid(1) : path;
}

}  // namespace dvsync
}  // namespace dv
}  // namespace sync
