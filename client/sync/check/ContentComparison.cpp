#include "client/sync/check/ContentComparison.h"

#include <algorithm>
#include <vector>

namespace ovsync {
namespace check {

namespace {

const size_t ComparedAtOnce = 64UL * 1024UL;

}  // namespace

void ContentComparison::Restart(qint64 /*size*/) {
    _file.Rewind();
    _isSameSoFar = true;
}

void ContentComparison::Write(const char* bytes, size_t size) {
    std::vector<char> here(std::min(size, ComparedAtOnce));
    while (_isSameSoFar && size > 0) {
        const size_t count = _file.Read(here.data(), std::min(size, here.size()));
        _isSameSoFar = count > 0 && std::equal(bytes, bytes + count, here.data());
        bytes += count;
        size -= count;
    }
}

bool ContentComparison::IsSame() {
    char next = 0;
    return _isSameSoFar && _file.Read(&next, 1) == 0;
}

}  // namespace check
}  // namespace ovsync
