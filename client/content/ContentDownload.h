#pragma once

#include "client/content/ContentSink.h"
#include "client/content/ContentTransaction.h"

namespace ovsync {
namespace content {

/// Asks for the content of a file. The sink is given the body of an answer of status 200, as it came, and of no other.
/// Not thread-safe.
class ContentDownload : public ContentTransaction {
public:
    /// `sink` has to outlive this object.
    ContentDownload(const QUrl& url, ContentSink& sink);

    void OnHeaders(int status, const Headers& headers) override;
    void OnBody(const char* bytes, size_t size) override;

private:
    ContentSink& _sink;
};

}  // namespace content
}  // namespace ovsync
