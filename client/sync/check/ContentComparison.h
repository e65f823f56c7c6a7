#pragma once

#include "client/content/ContentSink.h"
#include "client/sync/local/ILocalTree.h"

namespace ovsync {
namespace check {

/// Compares content, while it comes, with a file here. Not thread-safe.
class ContentComparison : public content::ContentSink {
public:
    /// `file` outlives this object.
    explicit ContentComparison(local::IReadableFile& file) : _file(file) {}

    void Restart(qint64 size) override;
    void Write(const char* bytes, size_t size) override;

    /// After the download.
    bool IsSame();

private:
    local::IReadableFile& _file;
    bool _isSameSoFar = true;
};

}  // namespace check
}  // namespace ovsync
