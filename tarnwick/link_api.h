#pragma once

#include "visit.h"

namespace tarnwick {

// POST /api/pc/link/start: gives a device a new code.
HttpReply startLink(Visit& visit);

// GET /api/pc/link/poll: says whether the code is approved, and hands over the token once.
HttpReply pollLink(Visit& visit);

} // namespace tarnwick
