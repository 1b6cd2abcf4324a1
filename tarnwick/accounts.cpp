#include "accounts.h"

namespace tarnwick {

std::string Account::limitLabel() const
{
    return std::to_string(gdpsCount) + " of " + std::to_string(gdpsLimit);
}

Account loadAccount(Database& database, std::int64_t id)
{
    Statement row = database.query("SELECT display_name, plan_name, gdps_limit,"
                                   " (SELECT count(*) FROM instances WHERE account_id = accounts.id)"
                                   " FROM accounts WHERE id = ?",
                                   id);
    if (!row.step()) {
        throw DatabaseError("the account is missing");
    }
    return {id, row.text(0), row.text(1), row.integer(2), row.integer(3)};
}

std::vector<Core> availableCores(Database& database)
{
    std::vector<Core> cores;
    Statement row = database.query("SELECT key, label FROM cores ORDER BY position");
    while (row.step()) {
        cores.push_back({row.text(0), row.text(1)});
    }
    return cores;
}

} // namespace tarnwick
