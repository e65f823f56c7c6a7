#pragma once

#include "client/cli/files/ReceivedContent.h"

namespace ovsync {
namespace files {

/// Content that goes to standard output, a pipe or a device, where nothing can be taken back. Throws LocalError when it
/// cannot be written. Not thread-safe.
class StreamedContent : public ReceivedContent {
public:
    /// `descriptor` stays open; `name` is for messages.
    StreamedContent(int descriptor, const QString& name);

protected:
    /// Throws SyncException when something was written.
    void Clear() override;
    void Keep(const char* bytes, size_t size) override;

private:
    const int _descriptor;
    const QString _name;
};

}  // namespace files
}  // namespace ovsync
