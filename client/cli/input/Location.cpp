#include "client/cli/input/Location.h"

#include <QRegularExpression>
#include <QStringList>

#include "client/cli/input/UsageError.h"

namespace ovsync {
namespace input {

namespace {

/// Why `text`, which was read as `url`, is not the URL of a server; empty when it is one.
QString ProblemOf(const QString& text, const QUrl& url) {
    static const QRegularExpression schemeForm(QStringLiteral("\\A([A-Za-z][A-Za-z0-9+.-]*)://"));
    static const QRegularExpression portForm(QStringLiteral("\\A[A-Za-z]+://[^/]*:([0-9]+)(?:[/?#]|\\z)"));
    if (text.isEmpty()) {
        return QStringLiteral("the URL is empty");
    }
    const QString scheme = schemeForm.match(text).captured(1).toLower();
    if (scheme.isEmpty()) {
        return QStringLiteral("not a URL, because no http:// or https:// is before it");
    }
    if (scheme != QLatin1String("http") && scheme != QLatin1String("https")) {
        return QStringLiteral("%1:// is not known here").arg(scheme);
    }
    const QString port = portForm.match(text).captured(1);
    bool isNumber = true;
    const int number = port.isEmpty() ? 1 : port.toInt(&isNumber);
    if (!isNumber || number < 1 || number > 65535) {
        return QStringLiteral("there is no port %1, only those from 1 to 65535").arg(port);
    }
    if (!url.isValid()) {
        return QStringLiteral("not a valid URL");
    }
    return url.host().isEmpty() ? QStringLiteral("no host is named") : QString();
}

/// `text`, which was read as `url`, without a user and a password, even where it is not a URL.
QString Shown(const QString& text, const QUrl& url) {
    return url.isValid() ? url.toDisplayString(QUrl::RemoveUserInfo) : text.mid(text.lastIndexOf(QLatin1Char('@')) + 1);
}

int UsualPort(const QUrl& url) {
    return url.scheme() == QLatin1String("https") ? 443 : 80;
}

[[noreturn]] void Reject(const QString& shown, const QString& reason) {
    throw UsageError(shown.isEmpty() ? reason : QStringLiteral("%1: %2").arg(shown, reason));
}

}  // namespace

Location Location::FromUrl(const QString& text) {
    const QUrl url(text);
    const QString shown = text.contains(QLatin1String("://")) ? Shown(text, url) : Shown(text, QUrl());
    const QString problem = ProblemOf(text, url);
    if (!problem.isEmpty()) {
        Reject(shown, problem + QStringLiteral("; a URL looks like http://host/folder/ or https://host/folder/"));
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
        // It would be dropped, and what has the name without it be taken.
        if (segment.startsWith(QLatin1String("%EF%BB%BF"), Qt::CaseInsensitive)) {
            Reject(shown, QStringLiteral("a name may not begin with a byte order mark (%EF%BB%BF)"));
        }
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

QUrl Location::Url() const {
    QUrl url = baseUrl;
    url.setPath(QLatin1Char('/') + serverPath, QUrl::DecodedMode);
    return url;
}

QString Location::Address() const {
    QUrl url = Url();
    if (url.port() == UsualPort(url)) {
        url.setPort(-1);
    }
    return url.toString(QUrl::FullyEncoded);
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
    const auto port = [](const QUrl& url) { return url.port(UsualPort(url)); };
    return baseUrl.scheme() == other.baseUrl.scheme() && baseUrl.host() == other.baseUrl.host() &&
           port(baseUrl) == port(other.baseUrl);
}

}  // namespace input
}  // namespace ovsync
