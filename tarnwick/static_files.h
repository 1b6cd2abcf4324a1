#pragma once

#include "visit.h"

namespace tarnwick {

HttpReply serveLogo(Visit& visit);
HttpReply serveStyleSheet(Visit& visit);

} // namespace tarnwick
