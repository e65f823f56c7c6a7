#pragma once

#include <QHash>
#include <QString>
#include <mutex>

namespace ovsync {
namespace wire {

/// The sizes of files that a listing cannot hand to the library, which keeps 32 bits of each. Thread-safe.
class LargeSizes {
public:
    /// The least size, in bytes, that is one.
    static constexpr quint64 Least = 0xffffffff;

    /// `serverPath` is decoded and has no '/' at its beginning.
    void Add(const QString& serverPath, qint64 size) {
        const std::lock_guard<std::mutex> lock(_mutex);
        _sizes.insert(serverPath, size);
    }

    /// -1 when none is known.
    qint64 Of(const QString& serverPath) const {
        const std::lock_guard<std::mutex> lock(_mutex);
        return _sizes.value(serverPath, -1);
    }

private:
    mutable std::mutex _mutex;
    QHash<QString, qint64> _sizes;
};

}  // namespace wire
}  // namespace ovsync
