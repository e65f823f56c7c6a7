#pragma once

#include <QAuthenticator>

#include "client/content/ContentExchange.h"
#include "client/content/IContentSession.h"
#include "client/wire/HttpSession.h"

namespace ovsync {
namespace content {

/// Reads and writes the content of files by GET, HEAD and PUT over a session of its own.
class ContentSession : public IContentSession {
public:
    /// A null `credentials` stands for none.
    ContentSession(const wire::HttpSessionSettings& settings, const QAuthenticator& credentials);

    std::optional<ContentVersion> Look(const QUrl& url) override;
    ContentVersion Download(const QUrl& url, ContentSink& sink) override;
    UploadOutcome Upload(const QUrl& url, wire::ContentSource& source, qint64 size, UploadCondition condition,
                         const ContentVersion& known) override;
    void Cancel() override;

private:
    void _Perform(ContentExchange& exchange);
    [[noreturn]] void _ThrowRefusal(const ContentExchange& exchange) const;

    wire::HttpSession _session;
};

}  // namespace content
}  // namespace ovsync
