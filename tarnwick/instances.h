#pragma once

#include "database.h"

#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

inline constexpr const char* statusOnline = "online";
inline constexpr const char* statusMaintenance = "maintenance";

struct Instance
{
    std::string slug;
    std::string displayName;
    std::string description;
    std::string emojiBadge;
    std::string accentColor;
    std::string tags;
    std::string presetName;
    std::string coreKey;
    std::string coreLabel;
    bool publicListing = false;
    std::string status;
    Moment createdAt;

    bool online() const { return status == statusOnline; }
};

// The GDPS projects of all accounts.
class Instances
{
public:
    Instances(Database& database, Clock clock);

    // In the order of their creation.
    std::vector<Instance> ofAccount(std::int64_t accountId) const;

    // The newest publicly listed ones, newest first.
    std::vector<Instance> recentPublic() const;

    std::optional<Instance> find(const std::string& slug) const;

    // Chooses the slug and the time; nothing when the account's limit is reached.
    std::optional<Instance> create(std::int64_t accountId, const Instance& wanted);

    // Both are false when the account has no such project.
    bool setStatus(std::int64_t accountId, const std::string& slug, const std::string& status);
    bool remove(std::int64_t accountId, const std::string& slug);

private:
    std::string freeSlug(const std::string& displayName) const;

    Database& m_database;
    Clock m_clock;
};

// Lower-case letters and digits of a name, joined by single dashes: "Neon Burst!" gives "neon-burst".
std::string slugFromName(const std::string& displayName);

} // namespace tarnwick
