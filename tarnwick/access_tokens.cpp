#include "access_tokens.h"

#include "secrets.h"

#include <utility>

namespace tarnwick {

namespace {

constexpr std::size_t accessTokenBytes = 32;

// "Last seen" is shown to the minute: no need to write to the disk on every request.
constexpr std::chrono::minutes lastSeenStep{1};

} // namespace

AccessTokens::AccessTokens(Database& database, Clock clock) : m_database(database), m_clock(std::move(clock)) {}

std::string AccessTokens::issue(std::int64_t accountId, const std::string& deviceId)
{
    std::string token = randomHex(accessTokenBytes);
    const Moment now = m_clock();
    m_database.run("UPDATE access_tokens SET revoked = 1 WHERE account_id = ? AND device_id = ?", accountId, deviceId);
    m_database.run("INSERT INTO access_tokens (account_id, device_id, token_hash, linked_at, last_seen_at, revoked)"
                   " VALUES (?, ?, ?, ?, ?, 0)",
                   accountId, deviceId, sha256Hex(token), now, now);
    return token;
}

TokenCheck AccessTokens::check(const std::string& token)
{
    Statement row = m_database.query("SELECT id, account_id, last_seen_at, revoked FROM access_tokens"
                                     " WHERE token_hash = ?",
                                     sha256Hex(token));
    if (!row.step()) {
        return {};
    }
    if (row.integer(3) != 0) {
        return {TokenCheck::Outcome::Revoked, 0};
    }
    if (const Moment now = m_clock(); now - row.moment(2) >= lastSeenStep) {
        m_database.run("UPDATE access_tokens SET last_seen_at = ? WHERE id = ?", now, row.integer(0));
    }
    return {TokenCheck::Outcome::Valid, row.integer(1)};
}

std::vector<LinkedDesktop> AccessTokens::linkedDesktops(std::int64_t accountId) const
{
    std::vector<LinkedDesktop> desktops;
    Statement row = m_database.query("SELECT id, device_id, linked_at, last_seen_at FROM access_tokens"
                                     " WHERE account_id = ? AND revoked = 0 ORDER BY id",
                                     accountId);
    while (row.step()) {
        desktops.push_back({row.integer(0), row.text(1), row.moment(2), row.moment(3)});
    }
    return desktops;
}

bool AccessTokens::revoke(std::int64_t accountId, std::int64_t desktopId)
{
    return m_database.run("UPDATE access_tokens SET revoked = 1 WHERE id = ? AND account_id = ? AND revoked = 0",
                          desktopId, accountId) == 1;
}

} // namespace tarnwick
