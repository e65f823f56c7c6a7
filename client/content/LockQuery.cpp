#include "client/content/LockQuery.h"

#include <QXmlStreamReader>

#include "host/core/SyncException.h"

namespace ovsync {
namespace content {

namespace {

// Above that of any folder in which people work.
const int AnswerLimit = 64 * 1024 * 1024;

}  // namespace

LockQuery::LockQuery(const QUrl& folder) : ContentTransaction("PROPFIND", folder) {}

QVector<LockQuery::HeldLock> LockQuery::LocksOf(const QString& owner) const {
    QVector<HeldLock> locks;
    QXmlStreamReader reader(_answer);
    QString href;
    QString lockOwner;
    QString token;
    bool isInLock = false;
    bool isInToken = false;
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.namespaceUri() != QLatin1String("DAV:")) {
            continue;
        }
        const QString name = reader.name().toString();
        if (reader.isStartElement()) {
            if (name == QLatin1String("activelock")) {
                isInLock = true;
                lockOwner.clear();
                token.clear();
            } else if (name == QLatin1String("locktoken")) {
                isInToken = true;
            } else if (name == QLatin1String("href") && isInToken) {
                token = reader.readElementText().trimmed();
            } else if (name == QLatin1String("href") && !isInLock) {
                href = reader.readElementText().trimmed();
            } else if (name == QLatin1String("owner")) {
                lockOwner = reader.readElementText(QXmlStreamReader::IncludeChildElements).trimmed();
            }
        } else if (reader.isEndElement()) {
            if (name == QLatin1String("locktoken")) {
                isInToken = false;
            } else if (name == QLatin1String("activelock")) {
                isInLock = false;
                if (lockOwner == owner && !token.isEmpty()) {
                    locks.append({_Resolved(href), '<' + token.toUtf8() + '>'});
                }
            }
        }
    }
    return locks;
}

QUrl LockQuery::_Resolved(const QString& href) const {
    QUrl url = Url().resolved(QUrl::fromEncoded(href.toUtf8()));
    url.setScheme(Url().scheme());
    url.setAuthority(Url().authority());
    return url;
}

wire::HttpTransaction::Headers LockQuery::RequestHeaders() const {
    return {{"Depth", "1"}, {"Content-Type", "application/xml; charset=\"utf-8\""}};
}

QByteArray LockQuery::RequestBody() const {
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<D:propfind xmlns:D=\"DAV:\"><D:prop><D:lockdiscovery/></D:prop></D:propfind>\n";
}

void LockQuery::Forget() {
    ContentTransaction::Forget();
    _answer.clear();
}

void LockQuery::OnBody(const char* bytes, size_t size) {
    _answer.append(bytes, static_cast<int>(size));
    if (_answer.size() > AnswerLimit) {
        throw sync::core::SyncException(QStringLiteral("the answer is above %1 bytes").arg(AnswerLimit));
    }
}

}  // namespace content
}  // namespace ovsync
