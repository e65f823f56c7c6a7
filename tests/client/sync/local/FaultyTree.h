#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <mutex>
#include <set>

#include "client/sync/local/ILocalTree.h"

namespace tests {

/// A synced folder in which a test can have something happen, or fail, right before any operation. Sees to it that no
/// new file gets its name before it is on the disk.
class FaultyTree : public ovsync::local::ILocalTree {
public:
    explicit FaultyTree(ovsync::local::ILocalTree& tree) : _tree(tree) {}

    /// Called before every operation, by its thread, with the operation's name and path. May throw.
    std::function<void(const char* operation, const QString& path)> before;
    bool tellsCaseApart = true;
    bool tellsFormsApart = true;
    bool knowsExchange = true;
    /// Whether flushing everything is as good as flushing each file.
    bool syncsAll = true;

    QVector<ovsync::local::NamedLocalEntry> List(const QString& folder) override {
        _Meet("List", folder);
        return _tree.List(folder);
    }
    std::optional<ovsync::local::LocalEntry> Look(const QString& path) override {
        _Meet("Look", path);
        return _tree.Look(path);
    }
    std::unique_ptr<ovsync::local::IReadableFile> Open(const QString& path) override {
        _Meet("Open", path);
        return _tree.Open(path);
    }
    std::unique_ptr<ovsync::local::IWritableFile> Create(const QString& path) override {
        _Meet("Create", path);
        _NoteUnflushed(path);
        return std::make_unique<File>(*this, _tree.Create(path), path);
    }
    std::unique_ptr<ovsync::local::IWritableFile> Reopen(const QString& path) override {
        _Meet("Reopen", path);
        return std::make_unique<File>(*this, _tree.Reopen(path), path);
    }
    void MakeFolder(const QString& path) override {
        _Meet("MakeFolder", path);
        _tree.MakeFolder(path);
    }
    bool Move(const QString& from, const QString& to) override {
        _Meet("Move", to);
        _ExpectFlushed(from);
        return _tree.Move(from, to);
    }
    bool Swap(const QString& a, const QString& b) override {
        _Meet("Swap", b);
        _ExpectFlushed(a);
        return knowsExchange && _tree.Swap(a, b);
    }
    void Remove(const QString& path) override {
        _Meet("Remove", path);
        _tree.Remove(path);
    }
    bool RemoveFolder(const QString& path) override {
        _Meet("RemoveFolder", path);
        return _tree.RemoveFolder(path);
    }
    void SyncFolder(const QString& folder) override {
        _Meet("SyncFolder", folder);
        _tree.SyncFolder(folder);
    }
    void SyncAll() override {
        _Meet("SyncAll", QString());
        const std::lock_guard<std::mutex> lock(_mutex);
        _tree.SyncAll();
        _unflushed.clear();
    }
    QString Identity() override { return _tree.Identity(); }
    bool TellsCaseApart() override { return tellsCaseApart; }
    bool TellsUnicodeFormsApart() override { return tellsFormsApart; }

private:
    class File : public ovsync::local::IWritableFile {
    public:
        File(FaultyTree& tree, std::unique_ptr<ovsync::local::IWritableFile> file, const QString& path)
            : _tree(tree), _file(std::move(file)), _path(path) {}

        void Write(const char* bytes, size_t size) override {
            _tree._Meet("Write", _path);
            _tree._NoteUnflushed(_path);
            _file->Write(bytes, size);
        }
        void Truncate(qint64 size) override {
            _tree._NoteUnflushed(_path);
            _file->Truncate(size);
        }
        void SetModified(const QDateTime& time) override {
            _tree._Meet("SetModified", _path);
            _tree._NoteUnflushed(_path);
            _file->SetModified(time);
        }
        void SetMode(unsigned mode) override {
            _tree._NoteUnflushed(_path);
            _file->SetMode(mode);
        }
        void Sync() override {
            _tree._Meet("Sync", _path);
            _file->Sync();
            _tree._NoteFlushed(_path);
        }
        bool IsSyncedWithAll() const override { return _tree.syncsAll; }
        ovsync::store::Fingerprint Look() override { return _file->Look(); }

    private:
        FaultyTree& _tree;
        const std::unique_ptr<ovsync::local::IWritableFile> _file;
        const QString _path;
    };

    void _Meet(const char* operation, const QString& path) {
        if (before) {
            before(operation, path);
        }
    }

    void _NoteUnflushed(const QString& path) {
        const std::lock_guard<std::mutex> lock(_mutex);
        _unflushed.insert(path);
    }

    void _NoteFlushed(const QString& path) {
        const std::lock_guard<std::mutex> lock(_mutex);
        _unflushed.erase(path);
    }

    void _ExpectFlushed(const QString& path) {
        const std::lock_guard<std::mutex> lock(_mutex);
        EXPECT_EQ(_unflushed.count(path), 0U) << path.toStdString() << " is not on the disk";
    }

    ovsync::local::ILocalTree& _tree;
    std::mutex _mutex;
    /// What a crash would lose.
    std::set<QString> _unflushed;
};

}  // namespace tests
