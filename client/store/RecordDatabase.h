#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "client/store/ConflictCopy.h"
#include "client/store/FileRecord.h"
#include "client/store/FolderRecord.h"
#include "client/store/PartialDownload.h"
#include "client/store/Placement.h"
#include "client/store/RecordChanges.h"
#include "client/store/Statement.h"

struct sqlite3;

namespace ovsync {
namespace store {

/// What is remembered of a synced folder from one pass to the next: an SQLite database in its hidden folder. One object
/// at a time, in all processes, can be open. What a committed transaction wrote survives a crash of the program and of
/// the system. Every operation throws StoreError. Not thread-safe.
class RecordDatabase {
public:
    enum class Access {
        /// Makes hidden folder and database where they are missing.
        Change,
        /// Changes nothing in the folder: works on a copy of the database, or on an empty one, which goes when this
        /// object does.
        Try
    };

    /// The name of the hidden folder.
    static QString HiddenFolder();
    /// The path of the database below the synced folder.
    static QString FilePath();

    /// Opens the database of the synced folder at the absolute path `root`. Throws when another process has it open,
    /// when it cannot be read, when a newer program wrote it, and when another folder comes to that place meanwhile;
    /// nothing is changed then.
    RecordDatabase(const QString& root, Access access);
    ~RecordDatabase();
    RecordDatabase(const RecordDatabase&) = delete;
    RecordDatabase& operator=(const RecordDatabase&) = delete;

    /// Reads all of it, and throws when it is damaged somewhere. To be done before anything is decided by it.
    void Check();

    /// The FolderIdentity of the synced folder that the hidden folder lies in; empty when it has none.
    QString Root() const;

    /// Undoes everything since it was made, unless it was committed.
    class Transaction {
    public:
        explicit Transaction(RecordDatabase& database);
        ~Transaction();
        Transaction(const Transaction&) = delete;
        Transaction& operator=(const Transaction&) = delete;

        void Commit();

    private:
        RecordDatabase& _database;
        bool _isOpen = true;
    };

    /// While it lives, reading record by record is cheaper: not each has to find out whether anything was written.
    /// What is written meanwhile is seen, and stays in the write-ahead log. Must not outlive the database.
    class Reading {
    public:
        explicit Reading(RecordDatabase& database);

    private:
        Statement _open;
    };

    /// In a transaction of its own.
    void Write(const RecordChanges& changes);

    std::optional<FileRecord> FindFile(const QString& path);
    /// In no order.
    QStringList FilePaths();
    int FileCount();
    /// How many files there are in `folder`, at any depth.
    int FileCountBelow(const QString& folder);
    bool HasFile(const QString& path);
    /// Of the files here, by their paths. In no order.
    void ForEachFingerprint(const std::function<void(const QString& path, const Fingerprint& file)>& take);
    QList<std::pair<QString, Fingerprint>> FingerprintsBelow(const QString& folder);
    void WriteFile(const FileRecord& record);
    void ForgetFile(const QString& path);

    /// The folders that the service had when the last pass ended. A folder comes before those in it.
    QStringList Folders();
    QList<FolderRecord> FolderRecords();
    std::optional<FolderRecord> FindFolder(const QString& path);
    /// Of all files and folders in it, at any depth. In no order.
    QStringList PathsBelow(const QString& folder);
    /// Of those that lie right in it; of the synced folder itself when it is empty. In no order.
    QStringList PathsIn(const QString& folder);
    /// Leaves it as it is when it is there.
    void WriteFolder(const QString& path);
    void WriteFolder(const FolderRecord& folder);
    void ForgetFolder(const QString& path);

    /// The file or folder at `from`, with everything in it, and what is remembered of copies, is at `to` now; on the
    /// service at `serverTo` in place of `serverFrom`.
    void MoveTree(const QString& from, const QString& to, const QString& serverFrom, const QString& serverTo);

    QList<Placement> Placements();
    void WritePlacement(const Placement& placement);
    void ForgetPlacement(const Placement& placement);

    QList<ConflictCopy> Copies();
    void WriteCopy(const ConflictCopy& copy);
    void ForgetCopy(const ConflictCopy& copy);

    QList<PartialDownload> PartialDownloads();
    void WritePartialDownload(const PartialDownload& part);
    void ForgetPartialDownload(const QString& path);

    /// Empty when it was never written.
    QString Setting(const QString& name);
    void WriteSetting(const QString& name, const QString& value);

private:
    struct Closer {
        void operator()(sqlite3* handle) const;
    };

    void _Open(const QString& file, int flags);
    void _TakeCopy(const QString& file);
    void _Prepare(const QString& root);
    /// Throws when the hidden folder that is locked lies elsewhere by now.
    void _CheckPlace(const QString& root) const;
    void _Execute(const char* sql);
    Statement& _Statement(const QByteArray& sql);
    /// The first column of all rows.
    static QStringList _Texts(Statement& statement);

    std::unique_ptr<QTemporaryDir> _copyFolder;
    int _lock = -1;
    std::unique_ptr<sqlite3, Closer> _handle;
    std::map<QByteArray, Statement> _statements;
};

}  // namespace store
}  // namespace ovsync
