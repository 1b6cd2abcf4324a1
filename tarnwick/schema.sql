-- Run once in a new data file. Times, also :now, are in milliseconds since 1970.

PRAGMA application_id = 0x54575043; -- "TWPC" marks the file as the service's

PRAGMA user_version = 2;

CREATE TABLE account (
    display_name TEXT NOT NULL,
    plan_name    TEXT NOT NULL,
    gdps_limit   INTEGER NOT NULL
);

CREATE TABLE cores (
    position INTEGER PRIMARY KEY,
    key      TEXT NOT NULL UNIQUE,
    label    TEXT NOT NULL
);

CREATE TABLE projects (
    id             INTEGER PRIMARY KEY AUTOINCREMENT,
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
    state      TEXT NOT NULL, -- pending, approved, denied, replaced or used
    created_at INTEGER NOT NULL
);

CREATE TABLE desktops (
    id           INTEGER PRIMARY KEY AUTOINCREMENT,
    device_id    TEXT NOT NULL,
    token_hash   TEXT NOT NULL UNIQUE,
    linked_at    INTEGER NOT NULL,
    last_seen_at INTEGER NOT NULL,
    revoked      INTEGER NOT NULL DEFAULT 0
);

INSERT INTO account VALUES ('Robin Vale', 'Creator', 5);

INSERT INTO cores (key, label) VALUES ('gdps-2.2', 'GDPS 2.2'), ('gdps-2.1', 'GDPS 2.1'), ('gdps-1.9', 'GDPS 1.9');

INSERT INTO projects VALUES
    (1, 'neon-burst', 'Neon Burst', 'Bright levels, weekly events, and a friendly leaderboard.', '🔥', '#ff8f1f',
     'neon, events', 'balanced', 'gdps-2.2', TRUE, 'online', :now),
    (2, 'cube-garden', 'Cube Garden', 'A quiet place for builders and their first levels.', '🌱', '#76c95b',
     'building, calm', 'casual', 'gdps-2.1', TRUE, 'maintenance', :now);
