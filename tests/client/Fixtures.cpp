#include "tests/client/Fixtures.h"

#include <QFile>
#include <stdexcept>

namespace tests {

using sync::http::DAVPropfindResponse;
using sync::http::DAVPropfindResult;

namespace {

QString DescribeEntry(const DAVPropfindResponse& entry) {
    const auto date = [](const QDateTime& time) { return time.toString(Qt::ISODateWithMs); };
    return QStringList{
        entry.getHref(),
        entry.getFilename(),
        entry.getResourceClassType(),
        entry.getVersionId(),
        entry.getItemId(),
        entry.getOwnerId(),
        entry.getPrivileges(),
        entry.getVisibility(),
        entry.getCheckSumMD5(),
        entry.getSyncOption(),
        date(entry.getCreatedDate()),
        date(entry.getLastModifiedDate()),
        date(entry.getLinksExtractedAtFileTime()),
        QString::number(entry.contentLength),
        QString::number(entry.versionNumber),
        QString::number(entry.resourceId),
        QString::number(entry.parentResourceId),
        QString::number(entry.attribute),
    }
        .join(QLatin1Char('|'));
}

}  // namespace

QByteArray FixtureBytes(const QString& name) {
    QFile file(QStringLiteral(CLIENT_HTTP_FIXTURES "/") + name);
    if (!file.open(QIODevice::ReadOnly)) {
        throw std::runtime_error("There is no fixture " + name.toStdString());
    }
    return file.readAll();
}

RawAnswer FixtureAnswer(const QString& name, int fillSize) {
    const QByteArray bytes = FixtureBytes(name + QStringLiteral(".http"));
    const int headEnd = bytes.indexOf("\n\n");
    if (headEnd < 0) {
        return {bytes, QByteArray()};
    }
    RawAnswer answer{bytes.left(headEnd + 1), bytes.mid(headEnd + 2)};
    answer.body.replace("@FILL@", QByteArray(fillSize, 'x'));
    if (!answer.head.contains("Content-Length:") && !answer.head.contains("Transfer-Encoding:")) {
        answer.head += "Content-Length: " + QByteArray::number(answer.body.size()) + '\n';
    }
    answer.head += '\n';
    answer.head.replace("\n", "\r\n");
    return answer;
}

QByteArray ListingAnswer(const QString& name) {
    const QByteArray body = FixtureBytes(QStringLiteral("listings/") + name);
    return "HTTP/1.1 207 Multi-Status\r\nContent-Type: application/xml; charset=\"utf-8\"\r\n"
           "Date: Fri, 20 Nov 2026 10:15:31 GMT\r\nContent-Length: " +
           QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

QStringList Describe(const DAVPropfindResult& result) {
    QStringList lines;
    for (auto entry = result.collectionResponses.begin(); entry != result.collectionResponses.end(); ++entry) {
        lines += QStringLiteral("collection|") + entry.key() + QLatin1Char('|') + DescribeEntry(entry.value());
    }
    for (auto entry = result.fileResponses.begin(); entry != result.fileResponses.end(); ++entry) {
        lines += QStringLiteral("file|") + entry.key() + QLatin1Char('|') + DescribeEntry(entry.value());
    }
    if (result.isSingleResponse) {
        lines += QStringLiteral("single|") + DescribeEntry(result.singleResponse);
    }
    lines += QStringLiteral("time|") + result.serverTime.toString(Qt::ISODate);
    return lines;
}

}  // namespace tests
