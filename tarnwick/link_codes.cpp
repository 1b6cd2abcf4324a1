#include "link_codes.h"

#include "secrets.h"

#include <algorithm>
#include <utility>

namespace tarnwick {

namespace {

// 32 characters, so that five random bits choose one evenly; without 0 and O, 1 and I, which people mix up.
constexpr std::string_view alphabet = "ABCDEFGHJKLMNPQRSTUVWXYZ23456789";
static_assert(alphabet.size() == 32);

constexpr std::string_view prefix = "TWPC-";
constexpr std::string_view prefixWithoutDash = prefix.substr(0, 4);
constexpr std::size_t codeCharacters = 6;

// Long enough that somebody who comes back late reads "expired" instead of "unknown".
constexpr std::chrono::hours memory{24};

std::string randomCode()
{
    std::string code(prefix);
    for (const unsigned char byte : randomBytes(codeCharacters)) {
        code += alphabet[byte & 31U];
    }
    return code;
}

LinkCodeState stateFromName(std::string_view name)
{
    if (name == "pending") {
        return LinkCodeState::Pending;
    }
    if (name == "approved") {
        return LinkCodeState::Approved;
    }
    if (name == "used") {
        return LinkCodeState::Used;
    }
    return name == "denied" ? LinkCodeState::Denied : LinkCodeState::Replaced;
}

bool canExpire(LinkCodeState state)
{
    return state == LinkCodeState::Pending || state == LinkCodeState::Approved;
}

char upperCase(char character)
{
    return character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A') : character;
}

} // namespace

std::string normaliseLinkCode(std::string_view typed)
{
    std::string characters;
    for (const char character : typed) {
        if (character != '-' && character != ' ') {
            characters += upperCase(character);
        }
    }
    if (characters.size() == prefixWithoutDash.size() + codeCharacters && characters.starts_with(prefixWithoutDash)) {
        characters.erase(0, prefixWithoutDash.size());
    }
    const bool isCode =
        characters.size() == codeCharacters && characters.find_first_not_of(alphabet) == std::string::npos;
    return isCode ? std::string(prefix) + characters : std::string();
}

LinkCodes::LinkCodes(Database& database, Clock clock) : m_database(database), m_clock(std::move(clock)) {}

LinkCode LinkCodes::start(const std::string& deviceId)
{
    Transaction transaction(m_database);
    forgetOldCodes();
    m_database.run("UPDATE link_codes SET state = 'replaced'"
                   " WHERE device_id = ? AND state IN ('pending', 'approved')",
                   deviceId);
    // A code that is still remembered is not given out again; with a billion codes a few tries are plenty.
    constexpr int tries = 20;
    for (int attempt = 0; attempt < tries; ++attempt) {
        const std::string code = randomCode();
        if (m_database.run("INSERT OR IGNORE INTO link_codes (code, device_id, state, account_id, created_at)"
                           " VALUES (?, ?, 'pending', 0, ?)",
                           code, deviceId, m_clock()) == 1) {
            transaction.commit();
            return {code, deviceId, LinkCodeState::Pending, 0, lifetime};
        }
    }
    throw DatabaseError("no free link code was found");
}

std::optional<LinkCode> LinkCodes::find(const std::string& code) const
{
    Statement row = m_database.query("SELECT device_id, state, account_id, created_at FROM link_codes"
                                     " WHERE code = ?",
                                     code);
    if (!row.step()) {
        return std::nullopt;
    }
    LinkCode found{code, row.text(0), stateFromName(row.text(1)), row.integer(2), {}};
    found.left = std::max(row.moment(3) + lifetime - m_clock(), std::chrono::milliseconds(0));
    if (canExpire(found.state) && found.left == std::chrono::milliseconds(0)) {
        found.state = LinkCodeState::Expired;
    }
    return found;
}

bool LinkCodes::decide(const std::string& code, LinkDecision decision, std::int64_t accountId)
{
    // One statement tests and sets, so of two decisions at once exactly one finds the code pending.
    return m_database.run("UPDATE link_codes SET state = ?, account_id = ?"
                          " WHERE code = ? AND state = 'pending' AND created_at > ?",
                          decision == LinkDecision::Approve ? "approved" : "denied", accountId, code,
                          m_clock() - lifetime) == 1;
}

bool LinkCodes::use(const std::string& code)
{
    return m_database.run("UPDATE link_codes SET state = 'used'"
                          " WHERE code = ? AND state = 'approved' AND created_at > ?",
                          code, m_clock() - lifetime) == 1;
}

void LinkCodes::forgetOldCodes()
{
    m_database.run("DELETE FROM link_codes WHERE created_at < ?", m_clock() - memory);
}

} // namespace tarnwick
