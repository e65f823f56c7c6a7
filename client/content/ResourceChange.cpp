#include "client/content/ResourceChange.h"

namespace ovsync {
namespace content {

ResourceChange::ResourceChange(const QByteArray& method, const QUrl& url, const Headers& headers)
    : ContentTransaction(method, url), _headers(headers) {}

}  // namespace content
}  // namespace ovsync
