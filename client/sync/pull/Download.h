#pragma once

#include <QCryptographicHash>
#include <QString>
#include <QUrl>
#include <atomic>
#include <exception>
#include <memory>

#include "client/content/IContentConnection.h"
#include "client/sync/local/ILocalTree.h"
#include "client/sync/pull/PullOrder.h"

namespace ovsync {
namespace pull {

/// Fetches one file into a temporary file beside its place. Run by one thread, used by another one afterwards.
class Download : private content::ContentSink {
public:
    /// How a small file is brought onto the disk. A large one is flushed by itself.
    enum class Flushing {
        Alone,
        /// Left to the tree's SyncAll, where that does it.
        WithAll
    };

    /// `bytes` counts what came.
    Download(local::ILocalTree& tree, PullOrder order, const QUrl& url, Flushing flushing, std::atomic<qint64>& bytes);
    /// Removes the temporary file, unless it was given away.
    ~Download() override;

    void Run(content::IContentConnection& session) noexcept;

    const PullOrder& Order() const { return _order; }
    /// The temporary file; the caller takes care of it from now on.
    QString GiveTemporary();

    /// Null when it succeeded, and then the rest is there, unless it is too large.
    std::exception_ptr Error() const { return _error; }
    const store::Fingerprint& Fresh() const { return _fresh; }
    /// Whether it is on the disk. If not, SyncAll of the tree brings it there.
    bool IsFlushed() const { return _isFlushed; }
    /// In hexadecimal.
    const QString& Md5() const { return _md5Text; }
    /// Whether it was broken off, which is no error, because what came is larger than what was listed.
    bool IsTooLarge() const { return _isTooLarge; }
    /// What came, or what was announced if that is more, in bytes.
    qint64 Size() const { return qMax(_size, _announced); }
    /// What the server said of the content that it sent.
    const content::ContentVersion& Version() const { return _version; }

private:
    void Restart(qint64 size) override;
    void Write(const char* bytes, size_t size) override;
    void _SetMode();
    void _Flush();
    void _CheckSize(qint64 size) const;

    local::ILocalTree& _tree;
    const PullOrder _order;
    const QUrl _url;
    const Flushing _flushing;
    std::atomic<qint64>& _bytes;
    qint64 _size = 0;
    qint64 _announced = -1;
    QString _temporary;
    std::unique_ptr<local::IWritableFile> _file;
    QCryptographicHash _md5{QCryptographicHash::Md5};

    std::exception_ptr _error;
    bool _isTooLarge = false;
    bool _isFlushed = false;
    store::Fingerprint _fresh;
    QString _md5Text;
    content::ContentVersion _version;
};

}  // namespace pull
}  // namespace ovsync
