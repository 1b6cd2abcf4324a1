#pragma once

#include "visit.h"

namespace tarnwick {

// GET /api/pc/me: whose desktop this is, and the cores of the account.
HttpReply showSession(Visit& visit);

// GET /api/pc/instances: the account's projects in the order of their creation.
HttpReply listInstances(Visit& visit);

// POST /api/pc/instances/create
HttpReply createInstance(Visit& visit);

} // namespace tarnwick
