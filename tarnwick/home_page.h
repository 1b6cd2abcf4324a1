#pragma once

#include "visit.h"

namespace tarnwick {

// GET /: the account with its linked desktops and projects.
HttpReply showHome(Visit& visit);

// POST /desktops/ID/revoke: ends a desktop's access.
HttpReply revokeDesktop(Visit& visit);

} // namespace tarnwick
