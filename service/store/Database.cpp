#include "service/store/Database.h"

#include <sqlite3.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "service/store/Statement.h"

namespace service::store {

void ThrowDatabaseError(sqlite3* database) {
    const char* file = sqlite3_db_filename(database, "main");
    const std::string message = std::string(file == nullptr ? "" : file) + ": " + sqlite3_errmsg(database);
    if (sqlite3_errcode(database) == SQLITE_FULL) {
        throw std::system_error(ENOSPC, std::generic_category(), message);
    }
    throw std::runtime_error(message);
}

void Database::Deleter::operator()(sqlite3* handle) const {
    sqlite3_close(handle);
}

Database::Database(const std::string& file) {
    sqlite3* handle = nullptr;
    const int result = sqlite3_open_v2(file.c_str(), &handle,
                                       SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    _handle.reset(handle);
    if (result != SQLITE_OK) {
        throw std::runtime_error(file + ": " + sqlite3_errstr(result));
    }
    sqlite3_extended_result_codes(handle, 0);
    Execute("PRAGMA locking_mode = EXCLUSIVE");
    Execute("PRAGMA journal_mode = WAL");
    Execute("PRAGMA synchronous = FULL");
    Execute("PRAGMA foreign_keys = ON");
    Statement check(handle, "PRAGMA quick_check(1)");
    check.Each([&] {
        if (check.Text(0) != "ok") {
            throw std::runtime_error(file + ": the database is damaged: " + check.Text(0));
        }
    });
}

Database::~Database() = default;

void Database::Execute(const char* sql) {
    if (sqlite3_exec(_handle.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        ThrowDatabaseError(_handle.get());
    }
}

Database::Transaction::Transaction(Database& database) : _database(database) {
    _database.Execute("BEGIN IMMEDIATE");
}

Database::Transaction::~Transaction() {
    if (_isOpen) {
        // SQLite itself has ended the transaction after some errors; then this fails, and may.
        sqlite3_exec(_database.Handle(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

void Database::Transaction::Commit() {
    _database.Execute("COMMIT");
    _isOpen = false;
}

}  // namespace service::store
