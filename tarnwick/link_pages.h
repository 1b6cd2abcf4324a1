#pragma once

#include "visit.h"

namespace tarnwick {

// GET /link/pc: asks for a code, or shows the device that waits with it.
HttpReply showLinkPage(Visit& visit);

// POST /link/pc: approves or denies a waiting device.
HttpReply decideLink(Visit& visit);

} // namespace tarnwick
