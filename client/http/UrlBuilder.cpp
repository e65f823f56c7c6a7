#include "client/http/UrlBuilder.h"

#include <QStringList>

namespace ovsync {
namespace http {

std::shared_ptr<QUrl> UrlBuilder::BuildUrl(const sync::config::ServerConfiguration& server, const QString& serverPath) {
    const QUrl& base = server.baseUrl;
    const bool isHttp = base.scheme() == QLatin1String("http") || base.scheme() == QLatin1String("https");
    if (!base.isValid() || !isHttp || base.host().isEmpty()) {
        return nullptr;
    }
    if (serverPath.contains(QChar(0)) || !serverPath.isValidUtf16()) {
        return nullptr;
    }
    QByteArray url = base.toEncoded(QUrl::RemoveUserInfo | QUrl::RemoveQuery | QUrl::RemoveFragment);
    if (!url.endsWith('/')) {
        url += '/';
    }
    const QStringList segments = serverPath.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    for (const QString& segment : segments) {
        if (segment == QLatin1String(".") || segment == QLatin1String("..")) {
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
    return std::make_shared<QUrl>(QUrl::fromEncoded(url, QUrl::StrictMode));
}

}  // namespace http
}  // namespace ovsync
