#include "client/store/Statement.h"

#include <sqlite3.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "client/store/StoreError.h"

namespace ovsync {
namespace store {

void Statement::Deleter::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

Statement::Statement(sqlite3* database, const QByteArray& sql) : _database(database) {
    sqlite3_stmt* statement = nullptr;
    const int result =
        sqlite3_prepare_v3(database, sql.constData(), sql.size(), SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    _statement.reset(statement);
    _Check(result);
}

Statement& Statement::Bind(qint64 value) {
    _Check(sqlite3_bind_int64(_statement.get(), ++_bound, value));
    return *this;
}

Statement& Statement::Bind(const QString& value) {
    const QByteArray utf8 = value.toUtf8();
    _Check(sqlite3_bind_text(_statement.get(), ++_bound, utf8.constData(), utf8.size(), SQLITE_TRANSIENT));
    return *this;
}

Statement& Statement::Bind(const QDateTime& value) {
    if (value.isValid()) {
        return Bind(static_cast<qint64>(value.toMSecsSinceEpoch()));
    }
    _Check(sqlite3_bind_null(_statement.get(), ++_bound));
    return *this;
}

bool Statement::Step() {
    const int result = sqlite3_step(_statement.get());
    if (result == SQLITE_ROW) {
        return true;
    }
    if (result != SQLITE_DONE) {
        ThrowLastError(_database);
    }
    Reset();
    return false;
}

void Statement::Run() {
    while (Step()) {
        // An operation's rows, if it has any, say nothing.
    }
}

void Statement::Reset() {
    sqlite3_reset(_statement.get());
    _bound = 0;
}

qint64 Statement::Integer(int column) const {
    return sqlite3_column_int64(_statement.get(), column);
}

QString Statement::Text(int column) const {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(_statement.get(), column));
    return QString::fromUtf8(text, sqlite3_column_bytes(_statement.get(), column));
}

QDateTime Statement::Time(int column) const {
    return sqlite3_column_type(_statement.get(), column) == SQLITE_NULL
               ? QDateTime()
               : QDateTime::fromMSecsSinceEpoch(Integer(column), Qt::UTC);
}

void Statement::ThrowLastError(sqlite3* database) {
    const QString file = QString::fromUtf8(sqlite3_db_filename(database, "main"));
    const int code = sqlite3_errcode(database) & 0xff;
    if (code == SQLITE_BUSY || code == SQLITE_LOCKED) {
        throw StoreError(QStringLiteral("%1: another process is using the records of this folder").arg(file));
    }
    if (code == SQLITE_CORRUPT || code == SQLITE_NOTADB) {
        ThrowDamage(database, QString::fromUtf8(sqlite3_errmsg(database)));
    }
    // What SQLite says of files that it may not write tells nobody why.
    const QByteArray name = file.toUtf8();
    const bool isOfDisk = code == SQLITE_IOERR || code == SQLITE_CANTOPEN || code == SQLITE_READONLY;
    const bool isForbidden =
        isOfDisk && (access(name.left(name.lastIndexOf('/')).constData(), R_OK | W_OK | X_OK) != 0 ||
                     access(name.constData(), R_OK | W_OK) != 0);
    throw StoreError(QStringLiteral("%1: %2").arg(file, isForbidden ? QString::fromLocal8Bit(std::strerror(errno))
                                                                    : QString::fromUtf8(sqlite3_errmsg(database))));
}

void Statement::ThrowDamage(sqlite3* database, const QString& reason) {
    throw StoreError(
        QStringLiteral("%1: the records are damaged: %2. Without this file the next sync compares both sides "
                       "anew; move it away")
            .arg(QString::fromUtf8(sqlite3_db_filename(database, "main")), reason));
}

void Statement::_Check(int result) const {
    if (result != SQLITE_OK) {
        ThrowLastError(_database);
    }
}

}  // namespace store
}  // namespace ovsync
