#include "client/content/ResourceChange.h"

namespace ovsync {
namespace content {

ResourceChange::ResourceChange(const QByteArray& method, const QUrl& url, const Headers& headers,
                               const QByteArray& body)
    : ContentTransaction(method, url), _headers(headers), _body(body) {}

}  // namespace content
}  // namespace ovsync
