#include "client/wire/CurlHandle.h"

#include <new>

namespace ovsync {
namespace wire {

CurlHandle NewCurlHandle() {
    static const CURLcode result = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (result != CURLE_OK) {
        throw sync::core::SyncException(
            QStringLiteral("The HTTP library cannot be used: %1").arg(QString::fromUtf8(curl_easy_strerror(result))));
    }
    CurlHandle handle(curl_easy_init());
    if (!handle) {
        throw std::bad_alloc();
    }
    return handle;
}

}  // namespace wire
}  // namespace ovsync
