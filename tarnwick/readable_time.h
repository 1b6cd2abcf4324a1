#pragma once

#include "clock.h"

#include <string>

namespace tarnwick {

// "9 minutes 58 seconds"; a part of a second counts as a whole one, so that time that is left never reads as
// none.
std::string readableDuration(std::chrono::milliseconds duration);

// "21 November 2026, 14:05 UTC"
std::string readableMoment(Moment moment);

} // namespace tarnwick
