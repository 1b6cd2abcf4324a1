#pragma once

#include "database.h"

#include <string>
#include <vector>

namespace tarnwick {

struct LinkedDesktop
{
    std::int64_t id = 0;
    std::string deviceId;
    Moment linkedAt;
    Moment lastSeenAt;
};

struct TokenCheck
{
    enum class Outcome { Valid, Unknown, Revoked };

    Outcome outcome = Outcome::Unknown;
    std::int64_t accountId = 0;
};

// The bearer tokens of linked desktops. Only their SHA-256 is kept: a copied database opens no account.
class AccessTokens
{
public:
    AccessTokens(Database& database, Clock clock);

    // Returns the new token; a token that the same device had before ends.
    std::string issue(std::int64_t accountId, const std::string& deviceId);

    TokenCheck check(const std::string& token);

    std::vector<LinkedDesktop> linkedDesktops(std::int64_t accountId) const;

    // False when the account has no such linked desktop.
    bool revoke(std::int64_t accountId, std::int64_t desktopId);

private:
    Database& m_database;
    Clock m_clock;
};

} // namespace tarnwick
