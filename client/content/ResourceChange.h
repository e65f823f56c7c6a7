#pragma once

#include "client/content/ContentTransaction.h"

namespace ovsync {
namespace content {

/// A request that deletes, moves or copies what is at a URL. Not thread-safe.
class ResourceChange : public ContentTransaction {
public:
    ResourceChange(const QByteArray& method, const QUrl& url, const Headers& headers);

    Headers RequestHeaders() const override { return _headers; }

private:
    const Headers _headers;
};

}  // namespace content
}  // namespace ovsync
