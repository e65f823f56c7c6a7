#include "client/wire/HttpTransaction.h"

namespace ovsync {
namespace wire {

QByteArray HttpTransaction::ValueOf(const Headers& headers, const char* name) {
    QByteArray all;
    for (const auto& header : headers) {
        if (header.first.compare(name, Qt::CaseInsensitive) == 0) {
            all = all.isEmpty() ? header.second : all + ", " + header.second;
        }
    }
    return all;
}

bool HttpTransaction::HasXml(const Headers& headers) {
    const QByteArray mediaType = ValueOf(headers, "content-type").split(';').first().trimmed().toLower();
    return mediaType == "application/xml" || mediaType == "text/xml" || mediaType.endsWith("+xml");
}

QUrl HttpTransaction::AsCollection(const QUrl& url) {
    QUrl collection = url;
    if (!url.path(QUrl::FullyEncoded).endsWith(QLatin1Char('/'))) {
        // As an encoded path, because a decoded one would lose the escapes of '/' and '%'.
        collection.setPath(url.path(QUrl::FullyEncoded) + QLatin1Char('/'), QUrl::TolerantMode);
    }
    return collection;
}

}  // namespace wire
}  // namespace ovsync
