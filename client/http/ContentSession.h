#pragma once

#include <QAuthenticator>

#include "client/http/ContentExchange.h"
#include "client/http/HttpSession.h"
#include "client/http/IContentSession.h"

namespace ovsync {
namespace http {

/// Reads and writes the content of files by GET, HEAD and PUT over a session of its own.
class ContentSession : public IContentSession {
public:
    /// A null `credentials` stands for none.
    ContentSession(const HttpSessionSettings& settings, const QAuthenticator& credentials);

    std::optional<ContentVersion> Look(const QUrl& url) override;
    ContentVersion Download(const QUrl& url, ContentSink& sink) override;
    UploadOutcome Upload(const QUrl& url, ContentSource& source, qint64 size, UploadCondition condition,
                         const ContentVersion& known) override;
    void Cancel() override;

private:
    void _Perform(ContentExchange& exchange);
    [[noreturn]] void _ThrowRefusal(const ContentExchange& exchange) const;

    HttpSession _session;
};

}  // namespace http
}  // namespace ovsync
