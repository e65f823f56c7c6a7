#pragma once

#include <QCryptographicHash>
#include <QDateTime>
#include <QString>
#include <memory>
#include <optional>

#include "client/sync/local/LocalFile.h"
#include "client/wire/IContentSource.h"

namespace ovsync {
namespace files {

/// A file of this machine while it is sent, its date, its executable bit and the MD5 of what was sent. Throws
/// LocalError when it cannot be read. Not thread-safe.
class SentFile : public wire::IContentSource {
public:
    /// Follows links. "-" is all of standard input, kept on the disk until it is sent, because its size has to be known
    /// before. Throws UsageError when `path` is a folder or no file that has a size.
    explicit SentFile(const QString& path);

    /// In bytes, when it was opened.
    qint64 Size() const { return _before.size; }
    /// Whether somebody wrote it since it was opened.
    bool HasChanged();

    void Restart() override;
    size_t Read(char* bytes, size_t size) override;
    QDateTime Modified() const override;
    QString Md5() const override { return QString::fromLatin1(_md5.result().toHex()); }
    std::optional<bool> IsExecutable() const override { return _isExecutable; }

private:
    void _Open(const QString& path);
    void _TakeStandardInput();

    std::unique_ptr<local::LocalFile> _file;
    store::Fingerprint _before;
    std::optional<bool> _isExecutable;
    QCryptographicHash _md5{QCryptographicHash::Md5};
};

}  // namespace files
}  // namespace ovsync
