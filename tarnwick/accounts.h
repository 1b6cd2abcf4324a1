#pragma once

#include "database.h"

#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

struct Account
{
    std::int64_t id = 0;
    std::string displayName;
    std::string planName;
    std::int64_t gdpsLimit = 0;
    std::int64_t gdpsCount = 0;

    // "3 of 5"
    std::string limitLabel() const;
    bool mayCreate() const { return gdpsCount < gdpsLimit; }
};

struct Core
{
    std::string key;
    std::string label;
};

Account loadAccount(Database& database, std::int64_t id);

// In the order a person should see them; the first is the default.
std::vector<Core> availableCores(Database& database);

} // namespace tarnwick
