#pragma once

#include <memory>
#include <string>

struct sqlite3;

namespace service::store {

/// Throws the last error of `database` as Statement describes it.
[[noreturn]] void ThrowDatabaseError(sqlite3* database);

/// An SQLite database whose commits survive a crash of the program and of the system. Used by one thread at a time;
/// throws as Statement does.
class Database {
public:
    /// Undoes everything since it was made, unless it was committed.
    class Transaction {
    public:
        explicit Transaction(Database& database);
        ~Transaction();
        Transaction(const Transaction&) = delete;
        Transaction& operator=(const Transaction&) = delete;

        void Commit();

    private:
        Database& _database;
        bool _isOpen = true;
    };

    /// Opens `file`, or makes it; its folder must be there. Throws when the file is damaged or no database.
    explicit Database(const std::string& file);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    /// Runs statements that have no parameters.
    void Execute(const char* sql);

    /// For making statements; stays owned by this object.
    sqlite3* Handle() const { return _handle.get(); }

private:
    struct Deleter {
        void operator()(sqlite3* handle) const;
    };

    std::unique_ptr<sqlite3, Deleter> _handle;
};

}  // namespace service::store
