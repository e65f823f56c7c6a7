#pragma once

#include <QCryptographicHash>
#include <QString>

#include "client/content/ContentSink.h"

namespace ovsync {
namespace files {

/// Content that is kept somewhere while it comes, and its size and MD5. Not thread-safe.
class ReceivedContent : public content::ContentSink {
public:
    void Restart(qint64 size) override;
    void Write(const char* bytes, size_t size) override;

    /// In bytes.
    qint64 Size() const { return _size; }
    /// In hexadecimal.
    QString Md5() const { return QString::fromLatin1(_md5.result().toHex()); }

protected:
    /// Forgets what was kept.
    virtual void Clear() = 0;
    virtual void Keep(const char* bytes, size_t size) = 0;

    /// Takes in what is kept already.
    void Count(const char* bytes, size_t size);
    void CountAnew();

private:
    qint64 _size = 0;
    QCryptographicHash _md5{QCryptographicHash::Md5};
};

}  // namespace files
}  // namespace ovsync
