#include "client/sync/local/LocalContent.h"

#include <QCryptographicHash>
#include <chrono>
#include <vector>

#include "client/sync/report/Cancelled.h"

namespace ovsync {
namespace local {

using report::Cancelled;

namespace {

const size_t BufferSize = 256UL * 1024UL;

// Longer than a tick of any file system's clock but those that count in seconds.
const qint64 YoungInNanoseconds = 100000000;

}  // namespace

std::optional<LocalContent> LocalContent::Of(ILocalTree& tree, const QString& path,
                                             const std::atomic<bool>& isStopped) {
    const std::unique_ptr<IReadableFile> file = tree.Open(path);
    const store::Fingerprint before = file->Look();
    QCryptographicHash md5(QCryptographicHash::Md5);
    std::vector<char> buffer(BufferSize);
    while (const size_t size = file->Read(buffer.data(), buffer.size())) {
        md5.addData(buffer.data(), static_cast<int>(size));
        Cancelled::ThrowIf(isStopped);
    }
    if (!file->Look().IsUnchangedSince(before)) {
        return std::nullopt;
    }
    return LocalContent{QString::fromLatin1(md5.result().toHex()), before};
}

store::Fingerprint Recordable(store::Fingerprint fingerprint) {
    const qint64 now =
        std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::system_clock::now().time_since_epoch())
            .count();
    if (now - fingerprint.modified < YoungInNanoseconds) {
        fingerprint.changed = 0;
    }
    return fingerprint;
}

}  // namespace local
}  // namespace ovsync
