#pragma once

#include <QAuthenticator>

#include "client/content/ContentTransaction.h"
#include "client/content/IContentConnection.h"
#include "client/wire/HttpConnection.h"

namespace ovsync {
namespace content {

/// Reads and writes the content of files by GET, HEAD and PUT over a connection of its own.
class ContentConnection : public IContentConnection {
public:
    /// A null `credentials` stands for none.
    ContentConnection(const wire::ConnectionSettings& settings, const QAuthenticator& credentials);

    std::optional<ContentVersion> Look(const QUrl& url) override;
    ContentVersion Download(const QUrl& url, ContentSink& sink) override;
    UploadOutcome Upload(const QUrl& url, wire::IContentSource& source, qint64 size, UploadCondition condition,
                         const ContentVersion& known) override;
    void Cancel() override;

private:
    void _Perform(ContentTransaction& transaction);
    [[noreturn]] void _ThrowRefusal(const ContentTransaction& transaction) const;

    wire::HttpConnection _session;
};

}  // namespace content
}  // namespace ovsync
