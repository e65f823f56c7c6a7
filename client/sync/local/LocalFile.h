#pragma once

#include <QString>

#include "client/sync/local/ILocalTree.h"

namespace ovsync {
namespace local {

/// A file of a LocalTree, open for reading or for writing. Closes it.
class LocalFile : public IReadableFile, public IWritableFile {
public:
    /// `path` is for messages.
    LocalFile(int descriptor, const QString& path, bool isSyncedWithAll = false);
    ~LocalFile() override;
    LocalFile(const LocalFile&) = delete;
    LocalFile& operator=(const LocalFile&) = delete;

    size_t Read(char* bytes, size_t size) override;
    void Rewind() override;
    void Write(const char* bytes, size_t size) override;
    void Truncate(qint64 size) override;
    void SetModified(const QDateTime& time) override;
    void SetMode(unsigned mode) override;
    void Sync() override;
    bool IsSyncedWithAll() const override { return _isSyncedWithAll; }
    store::Fingerprint Look() override;

private:
    void _Check(bool isDone) const;

    const int _descriptor;
    const QString _path;
    const bool _isSyncedWithAll;
};

}  // namespace local
}  // namespace ovsync
