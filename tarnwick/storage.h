#pragma once

#include "access_tokens.h"
#include "database.h"
#include "instances.h"
#include "link_codes.h"
#include "schema.h"

namespace tarnwick {

// Everything the service remembers.
struct Storage
{
    Storage(const std::string& file, const Clock& clock)
        : database(file),
          codes(database, clock),
          tokens(database, clock),
          instances(database, clock)
    {
        prepareSchema(database, clock());
    }

    Database database;
    LinkCodes codes;
    AccessTokens tokens;
    Instances instances;
};

} // namespace tarnwick
