#pragma once

#include <QCryptographicHash>
#include <QString>
#include <QUrl>
#include <atomic>
#include <chrono>
#include <exception>
#include <memory>

#include "client/content/IContentConnection.h"
#include "client/sync/local/ILocalTree.h"
#include "client/sync/pull/PullOrder.h"
#include "client/sync/pull/ReceivedPart.h"

namespace ovsync {
namespace pull {

/// Fetches one file into a temporary file beside its place, and leaves a part of a large one for another pass when it
/// fails. Run by one thread, used by another one afterwards.
class Download : private content::ContentSink {
public:
    /// In bytes, from which on a file counts as large.
    static constexpr qint64 LargeSize = qint64(1024) * 1024;

    /// How a small file is brought onto the disk. A large one is flushed by itself.
    enum class Flushing {
        Alone,
        /// Left to the tree's SyncAll, where that does it.
        WithAll
    };

    /// What the downloads of a run have in common.
    struct Shared {
        Flushing flushing;
        /// Counts what came.
        std::atomic<qint64>& bytes;
        const std::atomic<bool>& isStopped;
    };

    /// Tells `part`, where there is one, how far it has come.
    Download(local::ILocalTree& tree, PullOrder order, const QUrl& url, const Shared& shared,
             std::shared_ptr<ReceivedPart> part);
    /// Removes the temporary file, unless it was left to somebody else or `part` has it.
    ~Download() override;

    void Run(content::IContentConnection& session) noexcept;

    const PullOrder& Order() const { return _order; }
    const QString& Temporary() const { return _temporary; }
    /// Somebody else takes care of the temporary file from now on.
    void LeaveTemporary() { _temporary.clear(); }

    /// Null when it succeeded, and then the rest is there, unless it is too large.
    std::exception_ptr Error() const { return _error; }
    const store::Fingerprint& Fresh() const { return _fresh; }
    /// Whether it is on the disk. If not, SyncAll of the tree brings it there.
    bool IsFlushed() const { return _isFlushed; }
    /// In hexadecimal.
    const QString& Md5() const { return _md5Text; }
    /// Whether it went on where an earlier one had ended.
    bool IsResumed() const { return _isResumed; }
    /// Whether it was broken off, which is no error, because what came is larger than what was listed.
    bool IsTooLarge() const { return _isTooLarge; }
    /// What came, or what was announced if that is more, in bytes.
    qint64 Size() const { return qMax(_size, _announced); }
    /// What the server said of the content that it sent.
    const content::ContentVersion& Version() const { return _version; }

private:
    content::ContentPart Received() override;
    void TakeVersion(const content::ContentVersion& version) override;
    void Restart(qint64 size) override;
    void Write(const char* bytes, size_t size) override;
    /// Whether what the order says is there. Has read it then.
    bool _ReadPart();
    void _Reopen();
    void _CreateAnew();
    /// Flushes what has come, and tells that it can be gone on with.
    void _KeepPart();
    void _KeepPartOfFailed();
    void _ForgetPart();
    void _SetMode();
    void _Flush();
    void _CheckSize(qint64 size) const;

    local::ILocalTree& _tree;
    const PullOrder _order;
    const QUrl _url;
    const Shared _shared;
    const std::shared_ptr<ReceivedPart> _part;
    qint64 _size = 0;
    qint64 _announced = -1;
    QString _temporary;
    std::unique_ptr<local::IWritableFile> _file;
    QCryptographicHash _md5{QCryptographicHash::Md5};

    std::exception_ptr _error;
    bool _isResumed = false;
    QByteArray _entityTag;
    qint64 _keptSize = 0;
    std::chrono::steady_clock::time_point _keptAt;
    bool _isTooLarge = false;
    bool _isFlushed = false;
    store::Fingerprint _fresh;
    QString _md5Text;
    content::ContentVersion _version;
};

}  // namespace pull
}  // namespace ovsync
