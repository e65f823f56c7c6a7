#include "service/store/Statement.h"

#include <sqlite3.h>

#include "service/store/Database.h"

namespace service::store {

void Statement::Deleter::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

Statement::Statement(sqlite3* database, const std::string& sql) : _database(database) {
    sqlite3_stmt* statement = nullptr;
    const int result = sqlite3_prepare_v3(database, sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    _statement.reset(statement);
    if (result != SQLITE_OK) {
        ThrowDatabaseError(database);
    }
}

std::int64_t Statement::Integer(int column) const {
    return sqlite3_column_int64(_statement.get(), column);
}

std::string Statement::Text(int column) const {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(_statement.get(), column));
    return std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(_statement.get(), column)));
}

void Statement::_Bind(int index, std::int64_t value) {
    if (sqlite3_bind_int64(_statement.get(), index, value) != SQLITE_OK) {
        ThrowDatabaseError(_database);
    }
}

void Statement::_Bind(int index, std::string_view value) {
    // An empty view may point nowhere, which SQLite would take for NULL.
    const char* text = value.empty() ? "" : value.data();
    if (sqlite3_bind_text64(_statement.get(), index, text, value.size(), SQLITE_STATIC, SQLITE_UTF8) != SQLITE_OK) {
        ThrowDatabaseError(_database);
    }
}

bool Statement::_Step() {
    switch (sqlite3_step(_statement.get())) {
        case SQLITE_ROW:
            return true;
        case SQLITE_DONE:
            return false;
        default:
            ThrowDatabaseError(_database);
    }
}

void Statement::_Reset() {
    sqlite3_reset(_statement.get());
    sqlite3_clear_bindings(_statement.get());
}

}  // namespace service::store
