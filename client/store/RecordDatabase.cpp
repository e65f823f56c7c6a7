#include "client/store/RecordDatabase.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <cerrno>
#include <cstring>

#include "client/store/StoreError.h"

namespace ovsync {
namespace store {

using sync::config::FileConfiguration;

namespace {

const int SchemaVersion = 1;

// In the order in which _WriteRecord binds and ReadRecord reads them.
#define RECORD_COLUMNS                                                                                          \
    "path TEXT PRIMARY KEY, server_id INTEGER, name TEXT, server_path TEXT, attribute TEXT, md5 TEXT, created " \
    "INTEGER, "                                                                                                 \
    "modified INTEGER, size INTEGER, version TEXT, version_property TEXT, resource_id TEXT, visibility TEXT, "  \
    "owner TEXT, item_id TEXT, version_id TEXT, links_extracted INTEGER, privileges TEXT, sync_options TEXT, "  \
    "local_inode INTEGER, local_size INTEGER, local_modified INTEGER, local_changed INTEGER, content_md5 TEXT"
#define RECORD_VALUES "?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?"

const char Schema[] =
    "CREATE TABLE settings (name TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;"
    "CREATE TABLE files (" RECORD_COLUMNS
    ") WITHOUT ROWID;"
    "CREATE TABLE folders (path TEXT PRIMARY KEY) WITHOUT ROWID;"
    "CREATE TABLE copies (copy TEXT PRIMARY KEY, path TEXT NOT NULL, identity TEXT NOT NULL, content_md5 TEXT NOT "
    "NULL) WITHOUT ROWID;"
    "CREATE TABLE placements (" RECORD_COLUMNS
    ", temporary TEXT NOT NULL, is_removal INTEGER NOT NULL, old_inode INTEGER, old_size INTEGER, old_modified INTEGER)"
    " WITHOUT ROWID;";

const int RecordColumnCount = 24;

const char VersionKey[] = "version";
const char VersionIdKey[] = "versionId";
const char ResourceIdKey[] = "resourceId";
const char VisibilityKey[] = "visibility";

FileRecord ReadRecord(const Statement& row) {
    int column = -1;
    const auto text = [&] { return row.Text(++column); };
    const auto integer = [&] { return row.Integer(++column); };
    const auto time = [&] { return row.Time(++column); };
    FileRecord record;
    FileConfiguration& file = record.file;
    record.path = text();
    file.serverId = static_cast<int>(integer());
    file.name = text();
    file.serverPath = text();
    file.attribute = text();
    file.md5Checksum = text();
    file.createdDate = time();
    file.lastModifiedDate = time();
    file.size = integer();
    for (const char* key : {VersionKey, VersionIdKey, ResourceIdKey, VisibilityKey}) {
        file.customProperties.insert(QLatin1String(key), text());
    }
    file.ownerId = text();
    file.itemId = text();
    file.versionId = text();
    file.linksExtractedAtTime = time();
    file.setPrivileges(text());
    file.setSyncOptionPersistentAcrossMachines(text().split(QLatin1Char(','), Qt::SkipEmptyParts));
    record.local.inode = static_cast<quint64>(integer());
    record.local.size = integer();
    record.local.modified = integer();
    record.local.changed = integer();
    record.contentMd5 = text();
    return record;
}

void BindRecord(Statement& statement, const FileRecord& record) {
    const FileConfiguration& file = record.file;
    statement.Bind(record.path)
        .Bind(static_cast<qint64>(file.serverId))
        .Bind(file.name)
        .Bind(file.serverPath)
        .Bind(file.attribute)
        .Bind(file.md5Checksum)
        .Bind(file.createdDate)
        .Bind(file.lastModifiedDate)
        .Bind(file.size);
    for (const char* key : {VersionKey, VersionIdKey, ResourceIdKey, VisibilityKey}) {
        statement.Bind(file.customProperties.value(QLatin1String(key)));
    }
    statement.Bind(file.ownerId)
        .Bind(file.itemId)
        .Bind(file.versionId)
        .Bind(file.linksExtractedAtTime)
        .Bind(file.getPrivileges())
        .Bind(file.getSyncOptionPersistentAcrossMachines().join(QLatin1Char(',')))
        .Bind(static_cast<qint64>(record.local.inode))
        .Bind(record.local.size)
        .Bind(record.local.modified)
        .Bind(record.local.changed)
        .Bind(record.contentMd5);
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

RecordDatabase::RecordDatabase(const QString& root, Access access) {
    const QString folder = root + QLatin1Char('/') + HiddenFolder();
    const QString file = folder + QLatin1String("/records.db");
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
            throw StoreError(QStringLiteral("%1: another process is syncing this folder").arg(folder));
        }
        if (access == Access::Try) {
            _TakeCopy(file);
        } else {
            _Open(file, SQLITE_OPEN_NOFOLLOW);
        }
        _Prepare();
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

void RecordDatabase::_Prepare() {
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
    Statement check(_handle.get(), "PRAGMA quick_check(1)");
    if (check.Step() && check.Text(0) != QLatin1String("ok")) {
        throw StoreError(QStringLiteral("%1: the records are damaged: %2").arg(file, check.Text(0)));
    }
    check.Reset();
    _Execute("PRAGMA journal_mode = WAL");
    _Execute("PRAGMA synchronous = FULL");
    Transaction transaction(*this);
    if (found == 0) {
        _Execute(Schema);
        _Execute(("PRAGMA user_version = " + QByteArray::number(SchemaVersion)).constData());
    }
    transaction.Commit();
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

std::optional<FileRecord> RecordDatabase::FindFile(const QString& path) {
    Statement& statement = _Statement("SELECT * FROM files WHERE path = ?");
    std::optional<FileRecord> record;
    if (statement.Bind(path).Step()) {
        record = ReadRecord(statement);
        statement.Reset();
    }
    return record;
}

QStringList RecordDatabase::FilePaths() {
    QStringList paths;
    Statement& statement = _Statement("SELECT path FROM files");
    while (statement.Step()) {
        paths.append(statement.Text(0));
    }
    return paths;
}

void RecordDatabase::WriteFile(const FileRecord& record) {
    Statement& statement = _Statement("INSERT OR REPLACE INTO files VALUES (" RECORD_VALUES ")");
    BindRecord(statement, record);
    statement.Run();
}

void RecordDatabase::ForgetFile(const QString& path) {
    _Statement("DELETE FROM files WHERE path = ?").Bind(path).Run();
}

QStringList RecordDatabase::Folders() {
    QStringList paths;
    Statement& statement = _Statement("SELECT path FROM folders ORDER BY path");
    while (statement.Step()) {
        paths.append(statement.Text(0));
    }
    return paths;
}

void RecordDatabase::WriteFolder(const QString& path) {
    _Statement("INSERT OR IGNORE INTO folders VALUES (?)").Bind(path).Run();
}

void RecordDatabase::ForgetFolder(const QString& path) {
    _Statement("DELETE FROM folders WHERE path = ?").Bind(path).Run();
}

QList<Placement> RecordDatabase::Placements() {
    QList<Placement> placements;
    Statement& statement = _Statement("SELECT * FROM placements");
    while (statement.Step()) {
        int column = RecordColumnCount - 1;
        Placement placement;
        placement.record = ReadRecord(statement);
        placement.temporary = statement.Text(++column);
        placement.isRemoval = statement.Integer(++column) != 0;
        placement.old.inode = static_cast<quint64>(statement.Integer(++column));
        placement.old.size = statement.Integer(++column);
        placement.old.modified = statement.Integer(++column);
        placements.append(placement);
    }
    return placements;
}

void RecordDatabase::WritePlacement(const Placement& placement) {
    Statement& statement = _Statement("INSERT OR REPLACE INTO placements VALUES (" RECORD_VALUES ",?,?,?,?,?)");
    BindRecord(statement, placement.record);
    statement.Bind(placement.temporary)
        .Bind(static_cast<qint64>(placement.isRemoval))
        .Bind(static_cast<qint64>(placement.old.inode))
        .Bind(placement.old.size)
        .Bind(placement.old.modified)
        .Run();
}

void RecordDatabase::ForgetPlacement(const Placement& placement) {
    _Statement("DELETE FROM placements WHERE path = ?").Bind(placement.record.path).Run();
}

QList<ConflictCopy> RecordDatabase::Copies() {
    QList<ConflictCopy> copies;
    Statement& statement = _Statement("SELECT copy, path, identity, content_md5 FROM copies");
    while (statement.Step()) {
        copies.append({statement.Text(0), statement.Text(1), statement.Text(2), statement.Text(3)});
    }
    return copies;
}

void RecordDatabase::WriteCopy(const ConflictCopy& copy) {
    _Statement("INSERT OR REPLACE INTO copies VALUES (?, ?, ?, ?)")
        .Bind(copy.copy)
        .Bind(copy.path)
        .Bind(copy.identity)
        .Bind(copy.contentMd5)
        .Run();
}

void RecordDatabase::ForgetCopy(const ConflictCopy& copy) {
    _Statement("DELETE FROM copies WHERE copy = ?").Bind(copy.copy).Run();
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
