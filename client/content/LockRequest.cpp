#include "client/content/LockRequest.h"

#include "client/wire/HttpStatus.h"

namespace ovsync {
namespace content {

using wire::HttpStatus;

LockRequest::LockRequest(const QUrl& url, const QByteArray& entityTag, const QString& owner,
                         std::chrono::seconds longest)
    : ContentTransaction("LOCK", url), _entityTag(entityTag), _owner(owner), _longest(longest) {}

wire::HttpTransaction::Headers LockRequest::RequestHeaders() const {
    Headers headers{{"Depth", "0"},
                    {"Timeout", "Second-" + QByteArray::number(static_cast<qint64>(_longest.count()))},
                    {"Content-Type", "application/xml; charset=\"utf-8\""}};
    if (!_entityTag.isEmpty()) {
        // With If-Match some servers lock, and then find that their answer has another tag.
        headers.append(qMakePair(QByteArray("If"), "([" + _entityTag + "])"));
    }
    return headers;
}

QByteArray LockRequest::RequestBody() const {
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<D:lockinfo xmlns:D=\"DAV:\"><D:lockscope><D:exclusive/>"
           "</D:lockscope><D:locktype><D:write/></D:locktype><D:owner>" +
           _owner.toHtmlEscaped().toUtf8() + "</D:owner></D:lockinfo>\n";
}

void LockRequest::Forget() {
    ContentTransaction::Forget();
    _token.clear();
}

void LockRequest::OnHeaders(int status, const Headers& headers) {
    ContentTransaction::OnHeaders(status, headers);
    const QByteArray token = ValueOf(headers, "lock-token").trimmed();
    const bool isLocked = status == HttpStatus::Ok || status == HttpStatus::Created;
    _token = isLocked && token.startsWith('<') && token.endsWith('>') ? token : QByteArray();
}

}  // namespace content
}  // namespace ovsync
