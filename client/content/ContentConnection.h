#pragma once

#include <QAuthenticator>
#include <atomic>

#include "client/content/ContentDownload.h"
#include "client/content/ContentUpload.h"
#include "client/content/IContentConnection.h"
#include "client/content/PropertyChange.h"
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
    UploadAnswer Upload(const QUrl& url, wire::IContentSource& source, qint64 size, UploadCondition condition,
                        const ContentVersion& known) override;
    LockOutcome Lock(const QUrl& url, const QByteArray& entityTag, const QString& owner,
                     std::chrono::seconds longest) override;
    bool Unlock() noexcept override;
    void DoWithoutLocks() override { _hasLocks = false; }
    void Release(const QUrl& folder, const QString& owner) override;
    bool Remove(const QUrl& url, const ContentVersion& known) override;
    void Cancel() override;

private:
    /// Whether what came is of use; otherwise the whole content is to be asked for.
    bool _PerformRest(ContentDownload& rest);
    void _RequireContent(const ContentDownload& download) const;
    void _Perform(ContentTransaction& transaction);
    /// Tells what the server did not take with the content.
    void _SetAttributes(const ContentUpload& upload, const wire::IContentSource& source);
    /// Returns PropertyChange::Outcome, 0 when no answer came.
    int _Set(PropertyChange change);
    [[noreturn]] void _ThrowRefusal(const ContentTransaction& transaction) const;

    /// What a request has to say that changes what is locked.
    wire::HttpTransaction::Headers _LockCondition() const;

    const wire::ConnectionSettings _settings;
    const QAuthenticator _credentials;
    wire::HttpConnection _session;
    std::atomic<bool> _isCancelled{false};
    /// As requests name it; empty when nothing is locked.
    QByteArray _lockToken;
    QUrl _lockedUrl;
    /// Whether there may be a lock of which nothing is known.
    bool _mayBeLocked = false;
    /// Until it says that it has none.
    bool _hasLocks = true;
    /// Until it refuses one.
    bool _keepsDates = true;
};

}  // namespace content
}  // namespace ovsync
