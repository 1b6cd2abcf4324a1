#include "instances.h"

#include "accounts.h"

#include <utility>

namespace tarnwick {

namespace {

constexpr std::size_t longestSlug = 48;

constexpr const char* selectInstances =
    "SELECT slug, display_name, description, emoji_badge, accent_color, tags, preset_name, core_key, label,"
    " public_listing, status, created_at FROM instances JOIN cores ON cores.key = core_key ";

Instance readInstance(const Statement& row)
{
    return {row.text(0), row.text(1), row.text(2), row.text(3),         row.text(4),  row.text(5),
            row.text(6), row.text(7), row.text(8), row.integer(9) != 0, row.text(10), row.moment(11)};
}

std::vector<Instance> readInstances(Statement rows)
{
    std::vector<Instance> instances;
    while (rows.step()) {
        instances.push_back(readInstance(rows));
    }
    return instances;
}

bool isSlugCharacter(char character)
{
    return (character >= 'a' && character <= 'z') || (character >= '0' && character <= '9');
}

} // namespace

std::string slugFromName(const std::string& displayName)
{
    std::string slug;
    for (const char raw : displayName) {
        const char character = raw >= 'A' && raw <= 'Z' ? static_cast<char>(raw - 'A' + 'a') : raw;
        if (isSlugCharacter(character)) {
            slug += character;
        } else if (!slug.empty() && slug.back() != '-') {
            slug += '-';
        }
        if (slug.size() == longestSlug) {
            break;
        }
    }
    if (!slug.empty() && slug.back() == '-') {
        slug.pop_back();
    }
    return slug.empty() ? "gdps" : slug;
}

Instances::Instances(Database& database, Clock clock) : m_database(database), m_clock(std::move(clock)) {}

std::vector<Instance> Instances::ofAccount(std::int64_t accountId) const
{
    const std::string sql = std::string(selectInstances) + "WHERE account_id = ? ORDER BY id";
    return readInstances(m_database.query(sql, accountId));
}

std::vector<Instance> Instances::recentPublic() const
{
    const std::string sql = std::string(selectInstances) + "WHERE public_listing = 1 ORDER BY id DESC LIMIT 20";
    return readInstances(m_database.query(sql));
}

std::optional<Instance> Instances::find(const std::string& slug) const
{
    Statement row = m_database.query(std::string(selectInstances) + "WHERE slug = ?", slug);
    return row.step() ? std::optional(readInstance(row)) : std::nullopt;
}

std::optional<Instance> Instances::create(std::int64_t accountId, const Instance& wanted)
{
    // Counting and inserting belong together: two creations at once must not both take the last place.
    Transaction transaction(m_database);
    if (!loadAccount(m_database, accountId).mayCreate()) {
        return std::nullopt;
    }
    const std::string slug = freeSlug(wanted.displayName);
    m_database.run("INSERT INTO instances (account_id, slug, display_name, description, emoji_badge, accent_color,"
                   " tags, preset_name, core_key, public_listing, status, created_at)"
                   " VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
                   accountId, slug, wanted.displayName, wanted.description, wanted.emojiBadge, wanted.accentColor,
                   wanted.tags, wanted.presetName, wanted.coreKey, std::int64_t{wanted.publicListing}, wanted.status,
                   m_clock());
    transaction.commit();
    return find(slug);
}

bool Instances::setStatus(std::int64_t accountId, const std::string& slug, const std::string& status)
{
    return m_database.run("UPDATE instances SET status = ? WHERE slug = ? AND account_id = ?", status, slug,
                          accountId) == 1;
}

bool Instances::remove(std::int64_t accountId, const std::string& slug)
{
    return m_database.run("DELETE FROM instances WHERE slug = ? AND account_id = ?", slug, accountId) == 1;
}

std::string Instances::freeSlug(const std::string& displayName) const
{
    const std::string stem = slugFromName(displayName);
    std::string slug = stem;
    for (int number = 2; find(slug); ++number) {
        slug = stem + "-" + std::to_string(number);
    }
    return slug;
}

} // namespace tarnwick
