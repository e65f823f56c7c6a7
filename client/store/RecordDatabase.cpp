#include "client/store/RecordDatabase.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <cerrno>
#include <cstring>

#include "client/store/FolderBusy.h"
#include "client/store/FolderIdentity.h"
#include "client/store/StoreError.h"

namespace ovsync {
namespace store {

using sync::config::FileConfiguration;

namespace {

const int SchemaVersion = 3;

// In the order of MapColumns.
#define RECORD_COLUMNS                                                                                          \
    "path TEXT PRIMARY KEY, server_id INTEGER, name TEXT, server_path TEXT, attribute TEXT, md5 TEXT, created " \
    "INTEGER, "                                                                                                 \
    "modified INTEGER, size INTEGER, version TEXT, version_property TEXT, resource_id TEXT, visibility TEXT, "  \
    "owner TEXT, item_id TEXT, version_id TEXT, links_extracted INTEGER, privileges TEXT, sync_options TEXT, "  \
    "local_inode INTEGER, local_size INTEGER, local_modified INTEGER, local_changed INTEGER, content_md5 TEXT"
#define RECORD_VALUES "?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?"

#define PARTIAL_DOWNLOADS                                                                                      \
    "CREATE TABLE partial_downloads (path TEXT PRIMARY KEY, temporary TEXT NOT NULL, identity TEXT NOT NULL, " \
    "entity_tag TEXT NOT NULL, size INTEGER NOT NULL, md5 TEXT NOT NULL) WITHOUT ROWID;"

const char Schema[] =
    "CREATE TABLE settings (name TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;"
    "CREATE TABLE files (" RECORD_COLUMNS
    ") WITHOUT ROWID;"
    "CREATE TABLE folders (path TEXT PRIMARY KEY, inode INTEGER NOT NULL DEFAULT 0, item_id TEXT NOT NULL DEFAULT '') "
    "WITHOUT ROWID;"
    "CREATE TABLE copies (copy TEXT PRIMARY KEY, path TEXT NOT NULL, identity TEXT NOT NULL, content_md5 TEXT NOT "
    "NULL) WITHOUT ROWID;"
    "CREATE TABLE placements (" RECORD_COLUMNS
    ", temporary TEXT NOT NULL, is_removal INTEGER NOT NULL, old_inode INTEGER, old_size INTEGER, old_modified INTEGER)"
    " WITHOUT ROWID;" PARTIAL_DOWNLOADS;

/// What makes each format, from the first on, the next.
const char* const NextFormats[SchemaVersion - 1] = {
    "ALTER TABLE folders ADD COLUMN inode INTEGER NOT NULL DEFAULT 0;"
    "ALTER TABLE folders ADD COLUMN item_id TEXT NOT NULL DEFAULT '';",
    PARTIAL_DOWNLOADS,
};

/// Reads the columns of a row, one after the other.
class RowReader {
public:
    explicit RowReader(const Statement& row) : _row(row) {}

    void operator()(QString& value) { value = _row.Text(++_column); }
    void operator()(QDateTime& value) { value = _row.Time(++_column); }
    template <typename Number>
    void operator()(Number& value) {
        value = static_cast<Number>(_row.Integer(++_column));
    }

private:
    const Statement& _row;
    int _column = -1;
};

/// Binds the parameters of a statement, one after the other.
class RowBinder {
public:
    explicit RowBinder(Statement& statement) : _statement(statement) {}

    void operator()(const QString& value) { _statement.Bind(value); }
    void operator()(const QDateTime& value) { _statement.Bind(value); }
    template <typename Number>
    void operator()(Number value) {
        _statement.Bind(static_cast<qint64>(value));
    }

private:
    Statement& _statement;
};

/// Calls `column` with each field that a column holds, in the order of the columns: a RowReader fills them in.
template <typename Column>
void MapColumns(Column& column, FileRecord& record) {
    FileConfiguration& file = record.file;
    column(record.path);
    column(file.serverId);
    column(file.name);
    column(file.serverPath);
    column(file.attribute);
    column(file.md5Checksum);
    column(file.createdDate);
    column(file.lastModifiedDate);
    column(file.size);
    for (const char* key : {"version", "versionId", "resourceId", "visibility"}) {
        column(file.customProperties[QLatin1String(key)]);
    }
    column(file.ownerId);
    column(file.itemId);
    column(file.versionId);
    column(file.linksExtractedAtTime);
    QString privileges = file.getPrivileges();
    column(privileges);
    file.setPrivileges(privileges);
    QString options = file.getSyncOptionPersistentAcrossMachines().join(QLatin1Char(','));
    column(options);
    file.setSyncOptionPersistentAcrossMachines(options.split(QLatin1Char(','), Qt::SkipEmptyParts));
    column(record.local.inode);
    column(record.local.size);
    column(record.local.modified);
    column(record.local.changed);
    column(record.contentMd5);
}

template <typename Column>
void MapColumns(Column& column, Placement& placement) {
    MapColumns(column, placement.record);
    column(placement.temporary);
    column(placement.isRemoval);
    column(placement.old.inode);
    column(placement.old.size);
    column(placement.old.modified);
}

template <typename Column>
void MapColumns(Column& column, PartialDownload& part) {
    column(part.path);
    column(part.temporary);
    column(part.identity);
    column(part.entityTag);
    column(part.size);
    column(part.md5);
}

template <typename Column>
void MapColumns(Column& column, FolderRecord& folder) {
    column(folder.path);
    column(folder.inode);
    column(folder.itemId);
}

template <typename Column>
void MapColumns(Column& column, std::pair<QString, Fingerprint>& file) {
    column(file.first);
    column(file.second.inode);
    column(file.second.size);
    column(file.second.modified);
    column(file.second.changed);
}

template <typename Column>
void MapColumns(Column& column, ConflictCopy& copy) {
    column(copy.copy);
    column(copy.path);
    column(copy.identity);
    column(copy.contentMd5);
}

template <typename Row>
Row ReadRow(const Statement& statement) {
    Row row;
    RowReader reader(statement);
    MapColumns(reader, row);
    return row;
}

template <typename Row>
QList<Row> ReadRows(Statement& statement) {
    QList<Row> rows;
    while (statement.Step()) {
        rows.append(ReadRow<Row>(statement));
    }
    return rows;
}

/// Takes a copy, because the columns are mapped in both directions by one function.
template <typename Row>
void WriteRow(Statement& statement, Row row) {
    RowBinder binder(statement);
    MapColumns(binder, row);
    statement.Run();
}

[[noreturn]] void ThrowSystemError(const QString& path) {
    throw StoreError(QStringLiteral("%1: %2").arg(path, QString::fromLocal8Bit(std::strerror(errno))));
}

}  // namespace

void RecordDatabase::Closer::operator()(sqlite3* handle) const {
    sqlite3_close(handle);
}

QString RecordDatabase::HiddenFolder() {
    return QStringLiteral(".ovsync");
}

QString RecordDatabase::FilePath() {
    return HiddenFolder() + QLatin1String("/records.db");
}

RecordDatabase::RecordDatabase(const QString& root, Access access) {
    const QString folder = root + QLatin1Char('/') + HiddenFolder();
    const QString file = root + QLatin1Char('/') + FilePath();
    const QByteArray folderName = folder.toUtf8();
    if (access == Access::Change && mkdir(folderName.constData(), 0777) != 0 && errno != EEXIST) {
        ThrowSystemError(folder);
    }
    _lock = open(folderName.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (_lock < 0 && !(access == Access::Try && errno == ENOENT)) {
        ThrowSystemError(folder);
    }
    try {
        if (_lock >= 0 && flock(_lock, LOCK_EX | LOCK_NB) != 0) {
            throw FolderBusy(QStringLiteral("%1: another process is syncing this folder").arg(folder));
        }
        if (access == Access::Try) {
            _TakeCopy(file);
        } else {
            _Open(file, SQLITE_OPEN_NOFOLLOW);
        }
        _Prepare(root);
    } catch (...) {
        close(_lock);
        throw;
    }
}

RecordDatabase::~RecordDatabase() {
    _statements.clear();
    _handle.reset();
    close(_lock);
}

QString RecordDatabase::Root() const {
    const int root = _lock < 0 ? -1 : openat(_lock, "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    QString identity = root < 0 ? QString() : FolderIdentity(root);
    close(root);
    return identity;
}

void RecordDatabase::_TakeCopy(const QString& file) {
    if (!QFile::exists(file)) {
        _Open(QStringLiteral(":memory:"), 0);
        return;
    }
    _copyFolder = std::make_unique<QTemporaryDir>();
    const QString copy = _copyFolder->filePath(QStringLiteral("records.db"));
    // The second holds what a pass that was killed had committed.
    for (const char* suffix : {"", "-wal"}) {
        const QString source = file + QLatin1String(suffix);
        if (QFile::exists(source) && !QFile::copy(source, copy + QLatin1String(suffix))) {
            throw StoreError(QStringLiteral("%1: cannot be copied to %2").arg(source, _copyFolder->path()));
        }
    }
    _Open(copy, 0);
}

void RecordDatabase::_Open(const QString& file, int flags) {
    sqlite3* handle = nullptr;
    const int result =
        sqlite3_open_v2(file.toUtf8().constData(), &handle,
                        flags | SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    _handle.reset(handle);
    if (result != SQLITE_OK) {
        throw StoreError(QStringLiteral("%1: %2").arg(file, QString::fromUtf8(sqlite3_errstr(result))));
    }
}

void RecordDatabase::_CheckPlace(const QString& root) const {
    struct stat opened {};
    struct stat now {};
    const QByteArray folder = (root + QLatin1Char('/') + HiddenFolder()).toUtf8();
    const bool isThere = _lock < 0 || (fstat(_lock, &opened) == 0 && stat(folder.constData(), &now) == 0 &&
                                       opened.st_dev == now.st_dev && opened.st_ino == now.st_ino);
    if (!isThere) {
        throw StoreError(QStringLiteral("another folder, or another disk, has just come in the place of %1").arg(root));
    }
}

void RecordDatabase::_Prepare(const QString& root) {
    _Execute("PRAGMA locking_mode = EXCLUSIVE");
    Statement version(_handle.get(), "PRAGMA user_version");
    version.Step();
    const qint64 found = version.Integer(0);
    version.Reset();
    const QString file = QString::fromUtf8(sqlite3_db_filename(_handle.get(), "main"));
    if (found > SchemaVersion) {
        throw StoreError(QStringLiteral("%1: a newer version of this program wrote these records (format %2; this one "
                                        "reads up to %3). Nothing was changed.")
                             .arg(file)
                             .arg(found)
                             .arg(SchemaVersion));
    }
    if (found < SchemaVersion) {
        Check();
    }
    _Execute("PRAGMA journal_mode = WAL");
    _Execute("PRAGMA synchronous = FULL");
    Transaction transaction(*this);
    // The files of a database are opened one after the other, each by its path. All of them are open now.
    _CheckPlace(root);
    if (found < SchemaVersion) {
        if (found == 0) {
            _Execute(Schema);
        }
        for (qint64 format = found; format > 0 && format < SchemaVersion; ++format) {
            _Execute(NextFormats[format - 1]);
        }
        _Execute(("PRAGMA user_version = " + QByteArray::number(SchemaVersion)).constData());
    }
    transaction.Commit();
}

void RecordDatabase::Check() {
    Statement check(_handle.get(), "PRAGMA quick_check(1)");
    if (check.Step() && check.Text(0) != QLatin1String("ok")) {
        Statement::ThrowDamage(_handle.get(), check.Text(0).simplified());
    }
    check.Reset();
}

void RecordDatabase::_Execute(const char* sql) {
    if (sqlite3_exec(_handle.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        Statement::ThrowLastError(_handle.get());
    }
}

Statement& RecordDatabase::_Statement(const QByteArray& sql) {
    auto found = _statements.find(sql);
    if (found == _statements.end()) {
        found = _statements.emplace(sql, Statement(_handle.get(), sql)).first;
    }
    return found->second;
}

RecordDatabase::Transaction::Transaction(RecordDatabase& database) : _database(database) {
    _database._Execute("BEGIN EXCLUSIVE");
}

RecordDatabase::Transaction::~Transaction() {
    if (_isOpen) {
        // SQLite has ended the transaction itself after some errors; then this fails, and may.
        sqlite3_exec(_database._handle.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

void RecordDatabase::Transaction::Commit() {
    _database._Execute("COMMIT");
    _isOpen = false;
}

RecordDatabase::Reading::Reading(RecordDatabase& database)
    : _open(database._handle.get(), "SELECT 1 FROM sqlite_master") {
    _open.Step();
}

QStringList RecordDatabase::_Texts(Statement& statement) {
    QStringList texts;
    while (statement.Step()) {
        texts.append(statement.Text(0));
    }
    return texts;
}

void RecordDatabase::Write(const RecordChanges& changes) {
    Transaction transaction(*this);
    for (const FileRecord& record : changes.files) {
        WriteFile(record);
    }
    for (const QString& path : changes.folders) {
        WriteFolder(path);
    }
    for (const QString& path : changes.forgottenFiles) {
        ForgetFile(path);
    }
    for (const QString& path : changes.forgottenFolders) {
        ForgetFolder(path);
    }
    for (const ConflictCopy& copy : changes.forgottenCopies) {
        ForgetCopy(copy);
    }
    transaction.Commit();
}

std::optional<FileRecord> RecordDatabase::FindFile(const QString& path) {
    Statement& statement = _Statement("SELECT * FROM files WHERE path = ?");
    std::optional<FileRecord> record;
    if (statement.Bind(path).Step()) {
        record = ReadRow<FileRecord>(statement);
        statement.Reset();
    }
    return record;
}

QStringList RecordDatabase::FilePaths() {
    return _Texts(_Statement("SELECT path FROM files"));
}

int RecordDatabase::FileCount() {
    return _Texts(_Statement("SELECT count(*) FROM files")).first().toInt();
}

int RecordDatabase::FileCountBelow(const QString& folder) {
    if (folder.isEmpty()) {
        return FileCount();
    }
    Statement& statement = _Statement("SELECT count(*) FROM files WHERE path > ?1 || '/' AND path < ?1 || '0'");
    statement.Bind(folder).Step();
    const auto count = static_cast<int>(statement.Integer(0));
    statement.Reset();
    return count;
}

bool RecordDatabase::HasFile(const QString& path) {
    Statement& statement = _Statement("SELECT 1 FROM files WHERE path = ?");
    const bool isThere = statement.Bind(path).Step();
    statement.Reset();
    return isThere;
}

void RecordDatabase::ForEachFingerprint(const std::function<void(const QString& path, const Fingerprint& file)>& take) {
    Statement& statement = _Statement("SELECT path, local_inode, local_size, local_modified, local_changed FROM files");
    while (statement.Step()) {
        const auto file = ReadRow<std::pair<QString, Fingerprint>>(statement);
        take(file.first, file.second);
    }
}

QList<std::pair<QString, Fingerprint>> RecordDatabase::FingerprintsBelow(const QString& folder) {
    return ReadRows<std::pair<QString, Fingerprint>>(
        _Statement("SELECT path, local_inode, local_size, local_modified, local_changed FROM files WHERE path > ?1 || "
                   "'/' AND path < ?1 || '0'")
            .Bind(folder));
}

void RecordDatabase::WriteFile(const FileRecord& record) {
    WriteRow(_Statement("INSERT OR REPLACE INTO files VALUES (" RECORD_VALUES ")"), record);
}

void RecordDatabase::ForgetFile(const QString& path) {
    _Statement("DELETE FROM files WHERE path = ?").Bind(path).Run();
}

QStringList RecordDatabase::Folders() {
    return _Texts(_Statement("SELECT path FROM folders ORDER BY path"));
}

QList<FolderRecord> RecordDatabase::FolderRecords() {
    return ReadRows<FolderRecord>(_Statement("SELECT * FROM folders ORDER BY path"));
}

std::optional<FolderRecord> RecordDatabase::FindFolder(const QString& path) {
    Statement& statement = _Statement("SELECT * FROM folders WHERE path = ?");
    std::optional<FolderRecord> folder;
    if (statement.Bind(path).Step()) {
        folder = ReadRow<FolderRecord>(statement);
        statement.Reset();
    }
    return folder;
}

QStringList RecordDatabase::PathsBelow(const QString& folder) {
    const QByteArray isBelow = " WHERE path > ?1 || '/' AND path < ?1 || '0'";
    return _Texts(
        _Statement("SELECT path FROM files" + isBelow + " UNION ALL SELECT path FROM folders" + isBelow).Bind(folder));
}

QStringList RecordDatabase::PathsIn(const QString& folder) {
    const QByteArray isIn = folder.isEmpty() ? " WHERE instr(path || ?1, '/') = 0"
                                             : " WHERE path > ?1 || '/' AND path < ?1 || '0'"
                                               " AND instr(substr(path, length(?1) + 2), '/') = 0";
    return _Texts(
        _Statement("SELECT path FROM files" + isIn + " UNION ALL SELECT path FROM folders" + isIn).Bind(folder));
}

void RecordDatabase::WriteFolder(const QString& path) {
    _Statement("INSERT OR IGNORE INTO folders (path) VALUES (?)").Bind(path).Run();
}

void RecordDatabase::WriteFolder(const FolderRecord& folder) {
    WriteRow(_Statement("INSERT OR REPLACE INTO folders VALUES (?, ?, ?)"), folder);
}

void RecordDatabase::MoveTree(const QString& from, const QString& to, const QString& serverFrom,
                              const QString& serverTo) {
    // What lies below comes after the '/' and before what would come next.
    const QByteArray isMoved = "(path = ?1 OR (path > ?1 || '/' AND path < ?1 || '0'))";
    const QByteArray movedPath = "path = ?2 || substr(path, length(?1) + 1)";
    const QString name = to.mid(to.lastIndexOf(QLatin1Char('/')) + 1);
    _Statement(
        "UPDATE OR REPLACE files SET server_path = ?4 || substr(server_path, length(?3) + 1), name = CASE path "
        "WHEN ?1 THEN ?5 ELSE name END, " +
        movedPath + " WHERE " + isMoved)
        .Bind(from)
        .Bind(to)
        .Bind(serverFrom)
        .Bind(serverTo)
        .Bind(name)
        .Run();
    _Statement("UPDATE OR REPLACE folders SET " + movedPath + " WHERE " + isMoved).Bind(from).Bind(to).Run();
    _Statement("UPDATE OR REPLACE copies SET " + movedPath + " WHERE " + isMoved).Bind(from).Bind(to).Run();
    _Statement(
        "UPDATE OR REPLACE copies SET copy = ?2 || substr(copy, length(?1) + 1) WHERE copy > ?1 || '/' AND copy "
        "< ?1 || '0'")
        .Bind(from)
        .Bind(to)
        .Run();
}

void RecordDatabase::ForgetFolder(const QString& path) {
    _Statement("DELETE FROM folders WHERE path = ?").Bind(path).Run();
}

QList<Placement> RecordDatabase::Placements() {
    return ReadRows<Placement>(_Statement("SELECT * FROM placements"));
}

void RecordDatabase::WritePlacement(const Placement& placement) {
    WriteRow(_Statement("INSERT OR REPLACE INTO placements VALUES (" RECORD_VALUES ",?,?,?,?,?)"), placement);
}

void RecordDatabase::ForgetPlacement(const Placement& placement) {
    _Statement("DELETE FROM placements WHERE path = ?").Bind(placement.record.path).Run();
}

QList<ConflictCopy> RecordDatabase::Copies() {
    return ReadRows<ConflictCopy>(_Statement("SELECT * FROM copies"));
}

void RecordDatabase::WriteCopy(const ConflictCopy& copy) {
    WriteRow(_Statement("INSERT OR REPLACE INTO copies VALUES (?, ?, ?, ?)"), copy);
}

void RecordDatabase::ForgetCopy(const ConflictCopy& copy) {
    _Statement("DELETE FROM copies WHERE copy = ?").Bind(copy.copy).Run();
}

QList<PartialDownload> RecordDatabase::PartialDownloads() {
    return ReadRows<PartialDownload>(_Statement("SELECT * FROM partial_downloads"));
}

void RecordDatabase::WritePartialDownload(const PartialDownload& part) {
    WriteRow(_Statement("INSERT OR REPLACE INTO partial_downloads VALUES (?, ?, ?, ?, ?, ?)"), part);
}

void RecordDatabase::ForgetPartialDownload(const QString& path) {
    _Statement("DELETE FROM partial_downloads WHERE path = ?").Bind(path).Run();
}

QString RecordDatabase::Setting(const QString& name) {
    Statement& statement = _Statement("SELECT value FROM settings WHERE name = ?");
    QString value;
    if (statement.Bind(name).Step()) {
        value = statement.Text(0);
        statement.Reset();
    }
    return value;
}

void RecordDatabase::WriteSetting(const QString& name, const QString& value) {
    _Statement("INSERT OR REPLACE INTO settings VALUES (?, ?)").Bind(name).Bind(value).Run();
}

}  // namespace store
}  // namespace ovsync
