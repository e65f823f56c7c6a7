#pragma once

#include "client/requests/PropfindRequest.h"

namespace ovsync {
namespace requests {

/// Asks whether there is a folder, and for its id and its owner. These are in the headers that the library reads: where
/// the answer lacks them they are added from its entry. An entry that is no collection is given as 404, since there is
/// no folder then. Refuses what a PropfindRequest of Depth 0 refuses. Not thread-safe.
class FolderQueryRequest : public PropfindRequest {
public:
    /// `scope` is Any for a URL that names the folder by its id.
    FolderQueryRequest(const QUrl& url, listing::HrefScope scope);

    int GetStatusCode() override;
    QList<QPair<QByteArray, QByteArray>> GetResponseHeaders() override;

    Headers RequestHeaders() const override;

private:
    bool _HasFolder();
};

}  // namespace requests
}  // namespace ovsync
