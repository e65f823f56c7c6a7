#pragma once

#include <QHash>
#include <QMap>
#include <QString>
#include <mutex>
#include <optional>
#include <utility>

namespace ovsync {
namespace wire {

/// What listings say that cannot be handed to the library: of files sizes, of which it keeps 32 bits, and the
/// executable bit, for which it has no place; of collections the tags, where somebody wants them. Server paths are
/// decoded and have no '/' at their beginning. Thread-safe.
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

    /// From now on listings are asked for what tags are made of, and list folder by folder: of what comes in one
    /// answer, nobody knows whether a tag is older than what is listed below it.
    void KeepTags() {
        const std::lock_guard<std::mutex> lock(_mutex);
        _keepsTags = true;
        _tags.clear();
    }

    bool KeepsTags() const {
        const std::lock_guard<std::mutex> lock(_mutex);
        return _keepsTags;
    }

    /// A listing::CollectionTag. The first one of each collection counts, also when it is empty: what lies in it may
    /// have been listed by the time of another.
    void AddTag(const QString& serverPath, const QString& tag) {
        const std::lock_guard<std::mutex> lock(_mutex);
        if (!_tags.contains(serverPath)) {
            _tags.insert(serverPath, tag);
        }
    }

    QString TagOf(const QString& serverPath) const {
        const std::lock_guard<std::mutex> lock(_mutex);
        return _tags.value(serverPath);
    }

    /// Those that came since KeepTags; no more are kept.
    QMap<QString, QString> TakeTags() {
        const std::lock_guard<std::mutex> lock(_mutex);
        _keepsTags = false;
        return std::exchange(_tags, {});
    }

private:
    mutable std::mutex _mutex;
    QHash<QString, qint64> _sizes;
    QHash<QString, bool> _areExecutable;
    bool _keepsTags = false;
    QMap<QString, QString> _tags;
};

}  // namespace wire
}  // namespace ovsync
