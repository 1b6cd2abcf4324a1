#pragma once

#include "clock.h"
#include "database.h"

namespace tarnwick {

// The account every visitor of the local pages acts for.
constexpr std::int64_t ownerAccountId = 1;

// Makes the tables of a new database and fills in the owner's account with two projects; leaves a database
// that already has them alone; throws DatabaseError for a file that belongs to something else.
void prepareSchema(Database& database, Moment now);

} // namespace tarnwick
