#pragma once

#include <string_view>

namespace tarnwick {

// The bytes of a file that the build put into the program ("static/tarnwick-logo.png", "pages/layout.html");
// empty for an unknown name. The program therefore runs from any folder, without its source tree.
std::string_view asset(std::string_view name);

} // namespace tarnwick
