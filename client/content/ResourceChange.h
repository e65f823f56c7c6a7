#pragma once

#include "client/content/ContentTransaction.h"

namespace ovsync {
namespace content {

/// A request that changes what is at a URL in another way than by its content. Not thread-safe.
class ResourceChange : public ContentTransaction {
public:
    ResourceChange(const QByteArray& method, const QUrl& url, const Headers& headers,
                   const QByteArray& body = QByteArray());

    Headers RequestHeaders() const override { return _headers; }
    QByteArray RequestBody() const override { return _body; }

private:
    const Headers _headers;
    const QByteArray _body;
};

}  // namespace content
}  // namespace ovsync
