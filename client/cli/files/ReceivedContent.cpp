#include "client/cli/files/ReceivedContent.h"

namespace ovsync {
namespace files {

void ReceivedContent::Restart(qint64 /*size*/) {
    Clear();
    CountAnew();
}

void ReceivedContent::Write(const char* bytes, size_t size) {
    Keep(bytes, size);
    Count(bytes, size);
}

void ReceivedContent::Count(const char* bytes, size_t size) {
    _size += static_cast<qint64>(size);
    _md5.addData(bytes, static_cast<int>(size));
}

void ReceivedContent::CountAnew() {
    _size = 0;
    _md5.reset();
}

}  // namespace files
}  // namespace ovsync
