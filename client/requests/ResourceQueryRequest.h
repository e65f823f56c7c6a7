#pragma once

#include "client/requests/PropfindRequest.h"

namespace ovsync {
namespace requests {

/// Asks what is at a URL, without saying whether that is a file or a folder. Not thread-safe.
class ResourceQueryRequest : public PropfindRequest {
public:
    explicit ResourceQueryRequest(const QUrl& url);

    /// Whether there is a folder. Some servers say so by a redirect to the URL with a '/' at its end, and then tell
    /// nothing else of it.
    bool HasFolder();

    void Forget() override;
    void OnHeaders(int status, const Headers& headers) override;

private:
    bool _isRedirected = false;
};

}  // namespace requests
}  // namespace ovsync
