#include "schema.h"

namespace tarnwick {

namespace {

// Marks the file as the service's own: "TWPC" in ASCII.
constexpr std::int64_t applicationId = 0x54575043;
constexpr std::int64_t schemaVersion = 1;

constexpr const char* tables = R"sql(
CREATE TABLE accounts (
    id           INTEGER PRIMARY KEY,
    display_name TEXT NOT NULL,
    plan_name    TEXT NOT NULL,
    gdps_limit   INTEGER NOT NULL
);
CREATE TABLE cores (
    position INTEGER PRIMARY KEY,
    key      TEXT NOT NULL UNIQUE,
    label    TEXT NOT NULL
);
CREATE TABLE instances (
    id             INTEGER PRIMARY KEY AUTOINCREMENT,
    account_id     INTEGER NOT NULL REFERENCES accounts (id),
    slug           TEXT NOT NULL UNIQUE,
    display_name   TEXT NOT NULL,
    description    TEXT NOT NULL,
    emoji_badge    TEXT NOT NULL,
    accent_color   TEXT NOT NULL,
    tags           TEXT NOT NULL,
    preset_name    TEXT NOT NULL,
    core_key       TEXT NOT NULL REFERENCES cores (key),
    public_listing INTEGER NOT NULL,
    status         TEXT NOT NULL,
    created_at     INTEGER NOT NULL
);
CREATE TABLE link_codes (
    code       TEXT PRIMARY KEY,
    device_id  TEXT NOT NULL,
    state      TEXT NOT NULL,
    account_id INTEGER NOT NULL,
    created_at INTEGER NOT NULL
);
CREATE TABLE access_tokens (
    id           INTEGER PRIMARY KEY AUTOINCREMENT,
    account_id   INTEGER NOT NULL REFERENCES accounts (id),
    device_id    TEXT NOT NULL,
    token_hash   TEXT NOT NULL UNIQUE,
    linked_at    INTEGER NOT NULL,
    last_seen_at INTEGER NOT NULL,
    revoked      INTEGER NOT NULL
);
)sql";

std::int64_t pragma(Database& database, const char* sql)
{
    Statement statement = database.query(sql);
    return statement.step() ? statement.integer(0) : 0;
}

void addAccount(Database& database)
{
    database.run("INSERT INTO accounts VALUES (?, 'Robin Vale', 'Creator', 5)", ownerAccountId);
    database.execute("INSERT INTO cores (key, label) VALUES"
                     " ('gdps-2.2', 'GDPS 2.2'), ('gdps-2.1', 'GDPS 2.1'), ('gdps-1.9', 'GDPS 1.9')");
}

void addProjects(Database& database, Moment now)
{
    constexpr const char* insert =
        "INSERT INTO instances (account_id, slug, display_name, description, emoji_badge, accent_color, tags,"
        " preset_name, core_key, public_listing, status, created_at)"
        " VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, 1, ?, ?)";
    database.run(insert, ownerAccountId, "neon-burst", "Neon Burst",
                 "Bright levels, weekly events, and a friendly leaderboard.", "🔥", "#ff8f1f", "neon, events",
                 "balanced", "gdps-2.2", "online", now);
    database.run(insert, ownerAccountId, "cube-garden", "Cube Garden",
                 "A quiet place for builders and their first levels.", "🌱", "#76c95b", "building, calm", "casual",
                 "gdps-2.1", "maintenance", now);
}

void createSchema(Database& database, Moment now)
{
    database.execute(tables);
    addAccount(database);
    addProjects(database, now);
    database.execute(("PRAGMA application_id = " + std::to_string(applicationId)).c_str());
    database.execute(("PRAGMA user_version = " + std::to_string(schemaVersion)).c_str());
}

} // namespace

void prepareSchema(Database& database, Moment now)
{
    // Asked inside the transaction: of two services started on one new file, the second sees the first one's
    // tables.
    Transaction transaction(database);
    const bool isNew = pragma(database, "SELECT count(*) FROM sqlite_master") == 0;
    if (isNew) {
        createSchema(database, now);
    } else if (pragma(database, "PRAGMA application_id") != applicationId ||
               pragma(database, "PRAGMA user_version") != schemaVersion) {
        throw DatabaseError("the file is a database of another program or version");
    }
    transaction.commit();
}

} // namespace tarnwick
