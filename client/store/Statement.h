#pragma once

#include <QDateTime>
#include <QString>
#include <memory>

struct sqlite3;
struct sqlite3_stmt;

namespace ovsync {
namespace store {

/// A prepared SQL statement. To be bound from the first parameter to the last, stepped until there are no more rows or
/// Reset, and then it can be bound anew. Throws StoreError. Must not outlive its database. Not thread-safe.
class Statement {
public:
    Statement(sqlite3* database, const QByteArray& sql);

    Statement& Bind(qint64 value);
    Statement& Bind(const QString& value);
    /// An invalid time is NULL.
    Statement& Bind(const QDateTime& value);

    /// Whether there is a row, whose columns can then be read.
    bool Step();
    /// Steps through all rows.
    void Run();
    void Reset();

    qint64 Integer(int column) const;
    QString Text(int column) const;
    /// In UTC; invalid for NULL.
    QDateTime Time(int column) const;

    /// Throws the last error of `database`, with the path of its file.
    [[noreturn]] static void ThrowLastError(sqlite3* database);
    /// With what a person can do about it.
    [[noreturn]] static void ThrowDamage(sqlite3* database, const QString& reason);

private:
    struct Deleter {
        void operator()(sqlite3_stmt* statement) const;
    };

    void _Check(int result) const;

    sqlite3* _database;
    std::unique_ptr<sqlite3_stmt, Deleter> _statement;
    int _bound = 0;
};

}  // namespace store
}  // namespace ovsync
