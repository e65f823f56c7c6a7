#include "client/content/ContentDownload.h"

namespace ovsync {
namespace content {

ContentDownload::ContentDownload(const QUrl& url, ContentSink& sink) : ContentTransaction("GET", url), _sink(sink) {}

void ContentDownload::OnHeaders(int status, const Headers& headers) {
    ContentTransaction::OnHeaders(status, headers);
    if (status == 200) {
        Guard([this] { _sink.Restart(Version().size); });
    }
}

void ContentDownload::OnBody(const char* bytes, size_t size) {
    if (StatusCode() == 200) {
        Guard([&] { _sink.Write(bytes, size); });
    } else {
        ContentTransaction::OnBody(bytes, size);
    }
}

}  // namespace content
}  // namespace ovsync
