#pragma once

#include "clock.h"

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tarnwick {

class DatabaseError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// One SQL statement with its values bound. Rows are read by step() and the column functions.
class Statement
{
public:
    Statement(sqlite3* connection, std::string_view sql);

    template <typename... Values>
    Statement& bindAll(const Values&... values)
    {
        int index = 0;
        (bind(++index, values), ...);
        return *this;
    }

    // True while there is a row to read.
    bool step();

    std::int64_t integer(int column) const;
    std::string text(int column) const;
    Moment moment(int column) const;

private:
    struct Finalizer
    {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };

    void bind(int index, std::int64_t value);
    void bind(int index, std::string_view value);
    void bind(int index, Moment value);
    void check(int result) const;

    sqlite3* m_connection;
    std::unique_ptr<sqlite3_stmt, Finalizer> m_statement;
};

// One connection to one SQLite file. Not safe for two threads at once: the service hands out one request at a
// time.
class Database
{
public:
    // ":memory:" is a database that ends with the object.
    explicit Database(const std::string& file);

    void execute(const char* sql);

    template <typename... Values>
    Statement query(std::string_view sql, const Values&... values)
    {
        Statement statement(m_connection.get(), sql);
        statement.bindAll(values...);
        return statement;
    }

    // Runs a statement that gives no rows; returns how many rows it changed.
    template <typename... Values>
    int run(std::string_view sql, const Values&... values)
    {
        Statement statement = query(sql, values...);
        statement.step();
        return sqlite3_changes(m_connection.get());
    }

    std::int64_t lastRowId() const { return sqlite3_last_insert_rowid(m_connection.get()); }

private:
    struct Closer
    {
        void operator()(sqlite3* connection) const { sqlite3_close_v2(connection); }
    };

    std::unique_ptr<sqlite3, Closer> m_connection;
};

// Everything between construction and commit() happens whole or not at all.
class Transaction
{
public:
    explicit Transaction(Database& database);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    Transaction(Transaction&&) = delete;
    Transaction& operator=(Transaction&&) = delete;

    void commit();

private:
    Database& m_database;
    bool m_open = true;
};

} // namespace tarnwick
