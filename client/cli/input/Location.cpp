#include "client/cli/input/Location.h"

#include <QStringList>

#include "client/cli/input/UsageError.h"

namespace ovsync {
namespace input {

namespace {

// `shown` never holds what follows a user name, which may be a password.
[[noreturn]] void Reject(const QString& shown, const QString& reason) {
    throw UsageError(QStringLiteral("%1: %2").arg(shown, reason));
}

}  // namespace

Location Location::FromUrl(const QString& text) {
    const QUrl url(text);
    const QString shown = url.isValid() ? url.toDisplayString(QUrl::RemoveUserInfo) : QStringLiteral("URL");
    if (!url.isValid() || url.host().isEmpty() ||
        (url.scheme() != QLatin1String("http") && url.scheme() != QLatin1String("https"))) {
        Reject(shown,
               QStringLiteral("not a valid URL; it should look like http://host/folder/ or https://host/folder/"));
    }
    if (!url.password().isEmpty()) {
        Reject(shown, QStringLiteral("a password on the command line can be seen by others. Leave it out, and set "
                                     "OVSYNC_PASSWORD, use ~/.netrc or wait for the prompt"));
    }
    if (url.hasQuery() || url.hasFragment()) {
        Reject(shown,
               QStringLiteral("a folder's URL has no '?' and no '#'. Where they belong to a name, write %3F and %23"));
    }

    Location location;
    for (const QString& segment : url.path(QUrl::FullyEncoded).split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        const QString name = QUrl::fromPercentEncoding(segment.toUtf8());
        if (name == QLatin1String(".") || name == QLatin1String("..")) {
            Reject(shown, QStringLiteral("a path may not have '.' or '..' in it"));
        }
        if (name.contains(QLatin1Char('/')) || name.contains(QChar(0))) {
            Reject(shown, QStringLiteral("a name may have neither an encoded '/' nor a NUL in it"));
        }
        if (!location.serverPath.isEmpty()) {
            location.serverPath += QLatin1Char('/');
        }
        location.serverPath += name;
    }
    location.user = url.userName();
    location.isTypedAsFolder = url.path().isEmpty() || url.path().endsWith(QLatin1Char('/'));
    location.baseUrl.setScheme(url.scheme());
    location.baseUrl.setHost(url.host());
    location.baseUrl.setPort(url.port());
    location.baseUrl.setPath(QStringLiteral("/"));
    return location;
}

QString Location::ParentPath() const {
    return serverPath.left(qMax(0, serverPath.lastIndexOf(QLatin1Char('/'))));
}

QString Location::Name() const {
    return serverPath.mid(serverPath.lastIndexOf(QLatin1Char('/')) + 1);
}

Location Location::Parent() const {
    Location parent = *this;
    parent.serverPath = ParentPath();
    parent.isTypedAsFolder = true;
    return parent;
}

Location Location::Below(const QString& name) const {
    Location below = *this;
    below.serverPath += (serverPath.isEmpty() ? QString() : QStringLiteral("/")) + name;
    below.isTypedAsFolder = false;
    return below;
}

bool Location::IsOnServerOf(const Location& other) const {
    const auto port = [](const QUrl& url) { return url.port(url.scheme() == QLatin1String("https") ? 443 : 80); };
    return baseUrl.scheme() == other.baseUrl.scheme() && baseUrl.host() == other.baseUrl.host() &&
           port(baseUrl) == port(other.baseUrl);
}

}  // namespace input
}  // namespace ovsync
