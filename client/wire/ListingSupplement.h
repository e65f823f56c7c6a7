#pragma once

#include <QHash>
#include <QString>
#include <mutex>
#include <optional>

namespace ovsync {
namespace wire {

/// What listings say of files that cannot be handed to the library: sizes, of which it keeps 32 bits, and the
/// executable bit, for which it has no place. Server paths are decoded and have no '/' at their beginning.
/// Thread-safe.
class ListingSupplement {
public:
    /// The least size, in bytes, that is kept here.
    static constexpr quint64 LeastSize = 0xffffffff;

    void AddSize(const QString& serverPath, qint64 size) {
        const std::lock_guard<std::mutex> lock(_mutex);
        _sizes.insert(serverPath, size);
    }

    /// -1 when none is known.
    qint64 SizeOf(const QString& serverPath) const {
        const std::lock_guard<std::mutex> lock(_mutex);
        return _sizes.value(serverPath, -1);
    }

    void SetExecutable(const QString& serverPath, std::optional<bool> isExecutable) {
        const std::lock_guard<std::mutex> lock(_mutex);
        if (isExecutable) {
            _areExecutable.insert(serverPath, *isExecutable);
        } else {
            _areExecutable.remove(serverPath);
        }
    }

    /// Whether any listing said of any file whether it is executable.
    bool KnowsBits() const {
        const std::lock_guard<std::mutex> lock(_mutex);
        return !_areExecutable.isEmpty();
    }

    /// None when the last listing did not say.
    std::optional<bool> IsExecutable(const QString& serverPath) const {
        const std::lock_guard<std::mutex> lock(_mutex);
        const auto bit = _areExecutable.constFind(serverPath);
        return bit == _areExecutable.constEnd() ? std::nullopt : std::optional<bool>(*bit);
    }

private:
    mutable std::mutex _mutex;
    QHash<QString, qint64> _sizes;
    QHash<QString, bool> _areExecutable;
};

}  // namespace wire
}  // namespace ovsync
