#include "client/requests/UrlBuilder.h"

#include <QStringList>
#include <optional>

#include "client/listing/FolderProtocol.h"

namespace ovsync {
namespace requests {

using listing::MadeUpIdPrefix;
using sync::config::ServerConfiguration;

namespace {

/// The server's own URL, with a '/' at its end; empty when it is no http or https URL.
QByteArray EncodedBase(const ServerConfiguration& server) {
    const QUrl& base = server.baseUrl;
    const bool isHttp = base.scheme() == QLatin1String("http") || base.scheme() == QLatin1String("https");
    if (!base.isValid() || !isHttp || base.host().isEmpty()) {
        return QByteArray();
    }
    const QByteArray url = base.toEncoded(QUrl::RemoveUserInfo | QUrl::RemoveQuery | QUrl::RemoveFragment);
    return url.endsWith('/') ? url : url + '/';
}

bool CanStandInUrl(const QString& text) {
    return !text.contains(QChar(0)) && text.isValidUtf16();
}

bool IsDots(const QByteArray& segment) {
    return segment == "." || segment == "..";
}

/// The path, without a '/' at its front and with one at its end, that a made-up id stands for; empty for the root, none
/// when it stands for no path. A key's own escapes are those of a URL, so that decoding gives the bytes of the name.
std::optional<QByteArray> PathOfMadeUpId(const QString& id) {
    const QByteArray key = id.toUtf8().mid(static_cast<int>(qstrlen(MadeUpIdPrefix)));
    if (key.isEmpty()) {
        return QByteArray();
    }
    QByteArray path;
    for (const QByteArray& segment : key.split('/')) {
        const QByteArray name = QByteArray::fromPercentEncoding(segment);
        if (name.isEmpty() || IsDots(name) || name.contains('\0')) {
            return std::nullopt;
        }
        path += name.toPercentEncoding() + '/';
    }
    return path;
}

std::shared_ptr<QUrl> ToUrl(const QByteArray& encoded) {
    return std::make_shared<QUrl>(QUrl::fromEncoded(encoded, QUrl::StrictMode));
}

}  // namespace

std::shared_ptr<QUrl> UrlBuilder::BuildUrl(const ServerConfiguration& server, const QString& serverPath) {
    QByteArray url = EncodedBase(server);
    if (url.isEmpty() || !CanStandInUrl(serverPath)) {
        return nullptr;
    }
    const QStringList segments = serverPath.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    for (const QString& segment : segments) {
        if (IsDots(segment.toUtf8())) {
            return nullptr;
        }
        if (&segment != &segments.first()) {
            url += '/';
        }
        url += QUrl::toPercentEncoding(segment);
    }
    if (serverPath.endsWith(QLatin1Char('/')) && !url.endsWith('/')) {
        url += '/';
    }
    return ToUrl(url);
}

std::shared_ptr<QUrl> UrlBuilder::BuildFolderUrl(const ServerConfiguration& server,
                                                 const sync::config::FolderConfiguration& folder,
                                                 const QString& fileName, int urlKind) {
    switch (urlKind) {
        case FolderById:
        case FolderDeletion:
            return _BuildUrlById(server, folder.getServerFolderId(), QByteArray());
        case FolderByPath:
            return BuildUrl(server, folder.serverPath + QLatin1Char('/'));
        case FolderCreation:
            break;
        default:
            return nullptr;
    }
    if (!fileName.isEmpty()) {
        const QByteArray name = folder.name.toUtf8();
        const bool isName = !name.isEmpty() && !IsDots(name) && CanStandInUrl(folder.name);
        return isName ? _BuildUrlById(server, fileName, name.toPercentEncoding() + '/') : nullptr;
    }
    const bool isRoot = folder.serverPath.split(QLatin1Char('/'), Qt::SkipEmptyParts).isEmpty();
    return isRoot ? nullptr : BuildUrl(server, folder.serverPath + QLatin1Char('/'));
}

std::shared_ptr<QUrl> UrlBuilder::_BuildUrlById(const ServerConfiguration& server, const QString& id,
                                                const QByteArray& below) {
    const QByteArray base = EncodedBase(server);
    if (base.isEmpty() || id.isEmpty() || IsDots(id.toUtf8()) || !CanStandInUrl(id)) {
        return nullptr;
    }
    if (!id.startsWith(QLatin1String(MadeUpIdPrefix))) {
        return ToUrl(base + ".ovs/folders/" + QUrl::toPercentEncoding(id) + '/' + below);
    }
    const std::optional<QByteArray> path = PathOfMadeUpId(id);
    // A key counts from the root of the host, whatever the path of the server's own URL is.
    const QByteArray host =
        server.baseUrl.toEncoded(QUrl::RemoveUserInfo | QUrl::RemovePath | QUrl::RemoveQuery | QUrl::RemoveFragment);
    return path ? ToUrl(host + '/' + *path + below) : nullptr;
}

}  // namespace requests
}  // namespace ovsync
