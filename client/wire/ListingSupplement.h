#pragma once

#include <QHash>
#include <QMap>
#include <QString>
#include <mutex>
#include <utility>

#include "client/wire/FileAttributes.h"

namespace ovsync {
namespace wire {

/// What listings say that cannot be handed to the library: of files sizes, of which it keeps 32 bits, and
/// attributes for which it has no place; of collections the tags, where somebody wants them. Server paths are
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

    void SetAttributes(const QString& serverPath, const FileAttributes& attributes) {
        const std::lock_guard<std::mutex> lock(_mutex);
        if (attributes.IsEmpty()) {
            _attributes.remove(serverPath);
        } else {
            _attributes.insert(serverPath, attributes);
        }
    }

    /// Whether any listing said any of any file.
    bool KnowsAttributes() const {
        const std::lock_guard<std::mutex> lock(_mutex);
        return !_attributes.isEmpty();
    }

    /// As the last listing of it said.
    FileAttributes AttributesOf(const QString& serverPath) const {
        const std::lock_guard<std::mutex> lock(_mutex);
        return _attributes.value(serverPath);
    }

    /// Of all files.
    void ForgetFiles() {
        const std::lock_guard<std::mutex> lock(_mutex);
        _sizes = {};
        _attributes = {};
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
    QHash<QString, FileAttributes> _attributes;
    bool _keepsTags = false;
    QMap<QString, QString> _tags;
};

}  // namespace wire
}  // namespace ovsync
