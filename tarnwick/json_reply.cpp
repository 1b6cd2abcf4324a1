#include "json_reply.h"

#include <nlohmann/json.hpp>

namespace tarnwick {

HttpReply jsonReply(int status, const nlohmann::json& body)
{
    return {status, "application/json", body.dump(), {}};
}

HttpReply jsonMessage(int status, const std::string& message)
{
    return jsonReply(status, {{"message", message}});
}

} // namespace tarnwick
