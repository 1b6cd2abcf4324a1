#pragma once

#include "http_message.h"

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace tarnwick {

HttpReply jsonReply(int status, const nlohmann::json& body);

// {"message": "..."}
HttpReply jsonMessage(int status, const std::string& message);

} // namespace tarnwick
