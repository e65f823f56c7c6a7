#pragma once

#include <QCryptographicHash>
#include <QString>
#include <QUrl>
#include <atomic>
#include <chrono>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>

#include "client/content/IContentConnection.h"
#include "client/sync/local/ILocalTree.h"
#include "client/sync/push/PushOrder.h"
#include "host/core/SyncException.h"

namespace ovsync {
namespace push {

/// Sends one file. That takes a run of its own before when it replaces one whose entity tag the listing did not name:
/// it asks for the tag, so that the file can be looked at before it is sent; and one afterwards to ask what the service
/// has then, if nobody else has told it. Run by one thread, used by another one in between and afterwards.
class Upload : private wire::IContentSource {
public:
    /// When the service is asked what it has now.
    enum class Asking {
        /// By the run that sends the file.
        AtOnce,
        /// By the next run, unless TakeAnswer makes that needless.
        Later
    };

    /// The file became longer or shorter while it was sent.
    class Written : public sync::core::SyncException {
    public:
        using SyncException::SyncException;
    };

    /// What the uploads of a run have in common.
    struct Shared {
        /// Counts what was sent.
        std::atomic<qint64>& bytes;
        /// Becomes true when the server is seen to refuse what a condition forbids.
        std::atomic<bool>& knowsConditions;
        /// Ends waiting.
        const std::atomic<bool>& isStopped;
        /// For whom the service is asked to lock what is replaced.
        const QString& lockOwner;
        /// Held while it is asked: some servers lose locks that are made or ended at the same time.
        std::mutex& locking;
    };

    Upload(local::ILocalTree& tree, PushOrder order, const QUrl& url, Asking asking, const Shared& shared);

    void Run(content::IContentConnection& session) noexcept;

    const PushOrder& Order() const { return _order; }
    /// Whether only the first of two runs is over.
    bool IsToBeSent() const { return _isToBeSent; }
    /// Null when the last run succeeded, and then the rest is there.
    std::exception_ptr Error() const { return _error; }
    /// What the service has now: before the file was sent, or afterwards. None when it has no such file.
    const std::optional<content::ContentVersion>& Version() const { return _version; }

    /// Of what the service has before the file is sent: as it was listed, else as the service says now.
    const QDateTime& KnownDate() const {
        return _order.remote.lastModifiedDate.isValid() ? _order.remote.lastModifiedDate : _version->lastModified;
    }

    /// Whether the service may still have the file locked.
    bool IsLockLeft() const { return _isLockLeft; }

    /// To what was sent last.
    const content::UploadAnswer& Answer() const { return _answer; }
    /// Whether the file was stored, and it is not known what the service has now.
    bool IsToBeAsked() const { return _isToBeAsked; }
    /// What the service has now, as somebody else asked.
    void TakeAnswer(const content::ContentVersion& version);

    /// Whether the server refuses what a condition forbids; none when that was not tried or could not be found out.
    const std::optional<bool>& KnowsConditions() const { return _knowsConditions; }
    /// Of what was sent, in hexadecimal.
    const QString& SentMd5() const { return _md5Text; }
    /// Of the local file before and after it was sent.
    const store::Fingerprint& Before() const { return _before; }
    const store::Fingerprint& After() const { return _after; }

private:
    void Restart() override;
    size_t Read(char* bytes, size_t size) override;
    QDateTime Modified() const override;
    QString Md5() const override { return QString::fromLatin1(_md5.result().toHex()); }
    std::optional<bool> IsExecutable() const override { return _order.isExecutable; }
    bool ReplacesExecutable() const override { return _order.isExecutableThere; }
    std::optional<content::ContentVersion> _LookForTag(content::IContentConnection& session);
    void _WaitUntil(std::chrono::steady_clock::time_point end) const;
    void _Send(content::IContentConnection& session);
    void _SendLocked(content::IContentConnection& session, const content::ContentVersion& known);
    void _SendOver(content::IContentConnection& session, const content::ContentVersion& known);
    void _Ask(content::IContentConnection& session);
    /// Deletes what the service has, unless the file is here again.
    content::UploadOutcome _Remove(content::IContentConnection& session, const content::ContentVersion& known) const;
    content::UploadCondition _ConditionOf(const content::ContentVersion& known) const;
    /// Sends the same once more, although it must not be there.
    void _TryConditions(content::IContentConnection& session);
    /// Whether the service has something else than what the upload is to replace.
    bool _IsForestalled(content::IContentConnection& session, const content::ContentVersion& known) const;

    local::ILocalTree& _tree;
    const PushOrder _order;
    const QUrl _url;
    const Asking _asking;
    const Shared _shared;
    qint64 _size = 0;
    std::unique_ptr<local::IReadableFile> _file;
    QCryptographicHash _md5{QCryptographicHash::Md5};

    bool _isToBeSent = false;
    bool _isToBeAsked = false;
    bool _isLockLeft = false;
    std::exception_ptr _error;
    std::optional<content::ContentVersion> _version;
    content::UploadAnswer _answer;
    std::optional<bool> _knowsConditions;
    QString _md5Text;
    store::Fingerprint _before;
    store::Fingerprint _after;
};

}  // namespace push
}  // namespace ovsync
