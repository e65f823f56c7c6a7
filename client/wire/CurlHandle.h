#pragma once

#include <curl/curl.h>

#include <QString>
#include <memory>

#include "host/core/SyncException.h"

namespace ovsync {
namespace wire {

/// What all that use the HTTP library begin with.

struct CurlDeleter {
    void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

using CurlHandle = std::unique_ptr<CURL, CurlDeleter>;
using CurlList = std::unique_ptr<curl_slist, CurlDeleter>;

/// Throws SyncException when the library cannot be used. Thread-safe.
CurlHandle NewCurlHandle();

/// Throws SyncException.
template <typename Value>
void SetCurlOption(const CurlHandle& handle, CURLoption option, Value value) {
    const CURLcode result = curl_easy_setopt(handle.get(), option, value);
    if (result != CURLE_OK) {
        throw sync::core::SyncException(QStringLiteral("The HTTP library refuses option %1: %2")
                                            .arg(static_cast<int>(option))
                                            .arg(QString::fromUtf8(curl_easy_strerror(result))));
    }
}

}  // namespace wire
}  // namespace ovsync
