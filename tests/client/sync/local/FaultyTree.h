#pragma once

#include <functional>

#include "client/sync/local/ILocalTree.h"

namespace tests {

/// A synced folder in which a test can have something happen, or fail, right before any operation.
class FaultyTree : public ovsync::local::ILocalTree {
public:
    explicit FaultyTree(ovsync::local::ILocalTree& tree) : _tree(tree) {}

    /// Called before every operation, by its thread, with the operation's name and path. May throw.
    std::function<void(const char* operation, const QString& path)> before;
    bool tellsCaseApart = true;
    bool tellsFormsApart = true;
    bool knowsExchange = true;

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
        return std::make_unique<File>(*this, _tree.Create(path), path);
    }
    void MakeFolder(const QString& path) override {
        _Meet("MakeFolder", path);
        _tree.MakeFolder(path);
    }
    bool Move(const QString& from, const QString& to) override {
        _Meet("Move", to);
        return _tree.Move(from, to);
    }
    bool Swap(const QString& a, const QString& b) override {
        _Meet("Swap", b);
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
            _file->Write(bytes, size);
        }
        void Truncate() override { _file->Truncate(); }
        void SetModified(const QDateTime& time) override {
            _tree._Meet("SetModified", _path);
            _file->SetModified(time);
        }
        void SetMode(unsigned mode) override { _file->SetMode(mode); }
        void Sync() override {
            _tree._Meet("Sync", _path);
            _file->Sync();
        }
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

    ovsync::local::ILocalTree& _tree;
};

}  // namespace tests
