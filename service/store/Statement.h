#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace service::store {

/// A prepared SQL statement that can be run again and again. Every operation throws std::runtime_error with the path of
/// the database file and SQLite's message, or std::system_error (ENOSPC) when the disk is full. Must not outlive its
/// Database; used by one thread at a time.
class Statement {
public:
    Statement(sqlite3* database, const std::string& sql);

    /// Runs the statement with `arguments` (integers and texts) for its parameters.
    template <typename... Arguments>
    void Run(const Arguments&... arguments) {
        Each([] {}, arguments...);
    }

    /// Runs the statement and calls `onRow` for every row, during which the columns can be read.
    template <typename OnRow, typename... Arguments>
    void Each(OnRow onRow, const Arguments&... arguments) {
        const Reset reset{*this};
        int index = 0;
        (_Bind(++index, arguments), ...);
        while (_Step()) {
            onRow();
        }
    }

    std::int64_t Integer(int column) const;
    std::string Text(int column) const;

    /// The same, into a variable of the column's type.
    void Read(int column, std::int64_t& value) const { value = Integer(column); }
    void Read(int column, bool& value) const { value = Integer(column) != 0; }
    void Read(int column, std::string& value) const { value = Text(column); }

private:
    // Leaves no read transaction behind, whichever way a run ends.
    struct Reset {
        Statement& statement;
        ~Reset() { statement._Reset(); }
    };
    struct Deleter {
        void operator()(sqlite3_stmt* statement) const;
    };

    void _Bind(int index, std::int64_t value);
    void _Bind(int index, std::string_view value);
    bool _Step();
    void _Reset();

    sqlite3* _database;
    std::unique_ptr<sqlite3_stmt, Deleter> _statement;
};

}  // namespace service::store
