#pragma once

#include <QAuthenticator>

#include "client/content/ContentDownload.h"
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
    bool Remove(const QUrl& url, const ContentVersion& known) override;
    void Cancel() override;

private:
    /// Whether what came is of use; otherwise the whole content is to be asked for.
    bool _PerformRest(ContentDownload& rest);
    void _RequireContent(const ContentDownload& download) const;
    void _Perform(ContentTransaction& transaction);
    void _SetExecutable(const QUrl& url, bool isExecutable);
    [[noreturn]] void _ThrowRefusal(const ContentTransaction& transaction) const;

    wire::HttpConnection _session;
};

}  // namespace content
}  // namespace ovsync
