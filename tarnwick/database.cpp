#include "database.h"

namespace tarnwick {

namespace {

constexpr int busyTimeoutMs = 5000;

} // namespace

Statement::Statement(sqlite3* connection, std::string_view sql) : m_connection(connection)
{
    sqlite3_stmt* statement = nullptr;
    check(sqlite3_prepare_v2(connection, sql.data(), static_cast<int>(sql.size()), &statement, nullptr));
    m_statement.reset(statement);
}

bool Statement::step()
{
    const int result = sqlite3_step(m_statement.get());
    if (result != SQLITE_ROW && result != SQLITE_DONE) {
        check(result);
    }
    return result == SQLITE_ROW;
}

std::int64_t Statement::integer(int column) const
{
    return sqlite3_column_int64(m_statement.get(), column);
}

std::string Statement::text(int column) const
{
    const void* bytes = sqlite3_column_blob(m_statement.get(), column);
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(m_statement.get(), column));
    return bytes == nullptr ? std::string() : std::string(static_cast<const char*>(bytes), size);
}

Moment Statement::moment(int column) const
{
    return Moment(std::chrono::milliseconds(integer(column)));
}

void Statement::bind(int index, std::int64_t value)
{
    check(sqlite3_bind_int64(m_statement.get(), index, value));
}

void Statement::bind(int index, std::string_view value)
{
    check(sqlite3_bind_text64(m_statement.get(), index, value.data(), value.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
}

void Statement::bind(int index, Moment value)
{
    bind(index, static_cast<std::int64_t>(value.time_since_epoch().count()));
}

void Statement::check(int result) const
{
    if (result != SQLITE_OK) {
        throw DatabaseError(sqlite3_errmsg(m_connection));
    }
}

Database::Database(const std::string& file)
{
    sqlite3* connection = nullptr;
    const int result = sqlite3_open(file.c_str(), &connection);
    m_connection.reset(connection);
    if (result != SQLITE_OK) {
        throw DatabaseError(connection == nullptr ? "out of memory" : sqlite3_errmsg(connection));
    }
    sqlite3_busy_timeout(connection, busyTimeoutMs);
    // A service that is killed, or a machine that loses power, leaves each change whole or not made.
    execute("PRAGMA synchronous = FULL");
    execute("PRAGMA foreign_keys = ON");
}

void Database::execute(const char* sql)
{
    if (sqlite3_exec(m_connection.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw DatabaseError(sqlite3_errmsg(m_connection.get()));
    }
}

Transaction::Transaction(Database& database) : m_database(database)
{
    m_database.execute("BEGIN IMMEDIATE");
}

Transaction::~Transaction()
{
    if (!m_open) {
        return;
    }
    try {
        m_database.execute("ROLLBACK");
    } catch (const DatabaseError&) {
        // SQLite has already rolled back by itself, for example when the disk is full.
    }
}

void Transaction::commit()
{
    m_database.execute("COMMIT");
    m_open = false;
}

} // namespace tarnwick
