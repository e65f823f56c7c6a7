#pragma once

#include <QtGlobal>
#include <cstddef>

namespace ovsync {
namespace content {

/// Receives the content of a file while it comes. What an operation throws ends the download and passes through it.
class ContentSink {
public:
    virtual ~ContentSink() = default;

    /// Before the first piece: whatever was received is to be forgotten, the content starts anew. `size` is what the
    /// server announces, in bytes; -1 when it does not say.
    virtual void Restart(qint64 size) = 0;
    virtual void Write(const char* bytes, size_t size) = 0;
};

}  // namespace content
}  // namespace ovsync
