#pragma once

#include <QDateTime>
#include <QString>
#include <cstddef>
#include <optional>

namespace ovsync {
namespace wire {

/// Gives the content of a file while it is sent. What an operation throws ends the upload and passes through it.
class IContentSource {
public:
    virtual ~IContentSource() = default;

    /// Before the first piece, and again when the server wants to have the content a second time.
    virtual void Restart() = 0;
    /// Puts at most `size` bytes into `bytes` and returns how many; 0 at the end.
    virtual size_t Read(char* bytes, size_t size) = 0;
    /// When the file was last changed; invalid when the server is not to be told.
    virtual QDateTime Modified() const { return {}; }
    /// None when the server is not to be told.
    virtual std::optional<bool> IsExecutable() const { return std::nullopt; }
    /// Of all that was read since the last Restart, in hexadecimal; empty when nobody counts.
    virtual QString Md5() const { return {}; }
    /// Whether the server has an executable file in this place that is replaced.
    virtual bool ReplacesExecutable() const { return false; }
};

}  // namespace wire
}  // namespace ovsync
