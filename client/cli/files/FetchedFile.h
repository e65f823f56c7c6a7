#pragma once

#include <QDateTime>
#include <QString>
#include <QUrl>
#include <memory>
#include <optional>

#include "client/cli/files/ReceivedContent.h"
#include "client/sync/local/LocalFile.h"

namespace ovsync {
namespace files {

/// Content that comes into a hidden file beside its place, and is put there when it is whole. What an earlier process
/// left of the same URL goes on, if it was recorded which version it is of: that is a second hidden file, with the
/// strong entity tag. Both have the names of files that passes over a synced folder leave out and clear up. Throws
/// LocalError when something cannot be read or written. Not thread-safe.
class FetchedFile : public ReceivedContent {
public:
    /// `path` names a file or nothing, and no link. Throws Refusal when another process fetches the same.
    FetchedFile(const QString& path, const QUrl& url);
    /// Keeps what came when it can go on later; else nothing stays.
    ~FetchedFile() override;
    FetchedFile(const FetchedFile&) = delete;
    FetchedFile& operator=(const FetchedFile&) = delete;

    content::ContentPart Received() override;
    void TakeVersion(const content::ContentVersion& version) override;

    /// Whether something was kept that can go on later.
    bool CanGoOn() const { return !_recordedTag.isEmpty() && Size() > 0; }
    /// Forgets what came.
    void Discard();
    /// Gives the file its date, where that is valid, and the executable bit that the server told with the content or,
    /// by `isExecutable`, elsewhere; flushes it and puts it in its place, over what is there.
    void Install(const QDateTime& modified, std::optional<bool> isExecutable);

protected:
    void Clear() override;
    void Keep(const char* bytes, size_t size) override;

private:
    void _Open();
    void _ReadRecord();
    void _WriteRecord();

    const QString _path;
    const QString _partPath;
    const QString _recordPath;
    int _descriptor = -1;
    std::unique_ptr<local::LocalFile> _file;
    /// Of what is kept; empty when it cannot go on.
    QByteArray _recordedTag;
    content::ContentVersion _version;
    bool _isInstalled = false;
};

}  // namespace files
}  // namespace ovsync
