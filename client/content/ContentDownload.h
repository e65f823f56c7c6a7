#pragma once

#include "client/content/ContentSink.h"
#include "client/content/ContentTransaction.h"

namespace ovsync {
namespace content {

/// Asks for the content of a file. The sink is given the body of an answer of status 200, as it came, or of 206, if
/// that is what was asked for, and of no other. Not thread-safe.
class ContentDownload : public ContentTransaction {
public:
    /// Asks for what follows `part`, where there is one. `sink` has to outlive this object.
    ContentDownload(const QUrl& url, ContentSink& sink, const ContentPart& part);

    /// Whether the answer is of no use because a part was asked for: it is another part, or the server knows no such
    /// one.
    bool IsToBeAskedAnew() const { return _isWrongPart; }
    /// Whether the answer was the part that was asked for.
    bool IsRest() const { return _end >= 0; }
    /// What the server said of the whole content.
    ContentVersion Whole() const;

    Headers RequestHeaders() const override;
    void Forget() override;
    void OnHeaders(int status, const Headers& headers) override;
    void OnBody(const char* bytes, size_t size) override;
    void OnEnd() override;

private:
    void _TakeRest(const Headers& headers);

    ContentSink& _sink;
    const ContentPart _part;
    bool _isWrongPart = false;
    /// Where the part that comes ends, and how much of it came; -1 where no part comes.
    qint64 _end = -1;
    qint64 _received = 0;
};

}  // namespace content
}  // namespace ovsync
