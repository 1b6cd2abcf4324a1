#pragma once

#include "database.h"

#include <optional>
#include <string>
#include <string_view>

namespace tarnwick {

enum class LinkCodeState { Pending, Approved, Used, Denied, Replaced, Expired };

enum class LinkDecision { Approve, Deny };

struct LinkCode
{
    std::string code;
    std::string deviceId;
    LinkCodeState state = LinkCodeState::Pending;
    std::int64_t accountId = 0;
    std::chrono::milliseconds left{};
};

// Codes as a person types them (any case, with or without dashes and prefix) become "TWPC-" and six
// characters; what cannot be a code becomes empty.
std::string normaliseLinkCode(std::string_view typed);

// The one-time codes by which a desktop asks to be linked. Each belongs to the device that asked for it.
class LinkCodes
{
public:
    static constexpr std::chrono::minutes lifetime{10};

    LinkCodes(Database& database, Clock clock);

    // A device has one good code at most: starting again replaces the one before.
    LinkCode start(const std::string& deviceId);

    std::optional<LinkCode> find(const std::string& code) const;

    // True for the one decision that settled a pending code.
    bool decide(const std::string& code, LinkDecision decision, std::int64_t accountId);

    // True once for an approved code.
    bool use(const std::string& code);

private:
    void forgetOldCodes();

    Database& m_database;
    Clock m_clock;
};

} // namespace tarnwick
