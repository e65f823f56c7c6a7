#include "client/cli/files/StreamedContent.h"

#include <unistd.h>

#include <cerrno>

#include "client/sync/local/LocalError.h"

namespace ovsync {
namespace files {

StreamedContent::StreamedContent(int descriptor, const QString& name) : _descriptor(descriptor), _name(name) {}

void StreamedContent::Clear() {
    if (Size() > 0) {
        throw sync::core::SyncException(
            QStringLiteral("%1: the content began anew, and what was written before cannot be taken back").arg(_name));
    }
}

void StreamedContent::Keep(const char* bytes, size_t size) {
    while (size != 0) {
        const ssize_t count = write(_descriptor, bytes, size);
        if (count < 0 && errno != EINTR) {
            throw local::LocalError(_name, errno);
        }
        if (count > 0) {
            bytes += count;
            size -= static_cast<size_t>(count);
        }
    }
}

}  // namespace files
}  // namespace ovsync
