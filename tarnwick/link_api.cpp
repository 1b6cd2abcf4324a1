#include "link_api.h"

#include "accounts.h"
#include "json_reply.h"
#include "readable_time.h"
#include "text.h"

#include <nlohmann/json.hpp>

namespace tarnwick {

namespace {

constexpr std::size_t longestDeviceId = 200;

// Empty when the device identifier is fine.
std::string deviceIdFault(const std::string& deviceId)
{
    if (deviceId.empty()) {
        return "The request must name the device in device_id.";
    }
    if (characterCount(deviceId) > longestDeviceId || hasControlCharacter(deviceId, LineBreaks::Refused)) {
        return "The device_id must be one line of 200 characters at most.";
    }
    return {};
}

HttpReply pendingReply(const LinkCode& code)
{
    const std::string left = readableDuration(code.left);
    return jsonReply(202,
                     {{"message", "Waiting for approval. Code " + code.code + " is good for another " + left + "."},
                      {"expires_in", std::chrono::ceil<std::chrono::seconds>(code.left).count()}});
}

HttpReply approvedReply(Storage& storage, const LinkCode& code)
{
    // The code is spent and the token is made together, so that no crash leaves one without the other.
    Transaction transaction(storage.database);
    if (!storage.codes.use(code.code)) {
        return jsonMessage(410, "Link code " + code.code + " has already been used.");
    }
    const std::string token = storage.tokens.issue(code.accountId, code.deviceId);
    const std::string name = loadAccount(storage.database, code.accountId).displayName;
    transaction.commit();
    return jsonReply(200, {{"access_token", token}, {"message", "This desktop is now linked to " + name + "."}});
}

HttpReply goneReply(const LinkCode& code)
{
    const std::string subject = "Link code " + code.code;
    switch (code.state) {
    case LinkCodeState::Denied:
        return jsonMessage(410, subject + " was denied on the pairing page.");
    case LinkCodeState::Replaced:
        return jsonMessage(410, subject + " was replaced by a newer one.");
    case LinkCodeState::Expired:
        return jsonMessage(410, subject + " has expired. Generate a new one.");
    default:
        return jsonMessage(410, subject + " has already been used.");
    }
}

} // namespace

HttpReply startLink(Visit& visit)
{
    const std::string deviceId = trimmed(visit.form.value("device_id"));
    if (const std::string fault = deviceIdFault(deviceId); !fault.empty()) {
        return jsonMessage(422, fault);
    }
    const LinkCode code = visit.storage.codes.start(deviceId);
    return jsonReply(
        200, {{"code", code.code},
              {"approve_url", visit.baseUrl() + "/link/pc?code=" + code.code},
              {"expires_in", std::chrono::seconds(LinkCodes::lifetime).count()},
              {"message", "Approve code " + code.code + " within " + readableDuration(LinkCodes::lifetime) + "."}});
}

HttpReply pollLink(Visit& visit)
{
    const std::string deviceId = trimmed(visit.form.value("device_id"));
    if (!visit.form.find("code")) {
        return jsonMessage(422, "The request must name the link code in code.");
    }
    if (const std::string fault = deviceIdFault(deviceId); !fault.empty()) {
        return jsonMessage(422, fault);
    }
    const auto code = visit.storage.codes.find(normaliseLinkCode(visit.form.value("code")));
    // Another device's code is not acknowledged: only who asked for a code can collect its token.
    if (!code || code->deviceId != deviceId) {
        return jsonMessage(404, "This link code is unknown. Generate a new one.");
    }
    if (code->state == LinkCodeState::Pending) {
        return pendingReply(*code);
    }
    return code->state == LinkCodeState::Approved ? approvedReply(visit.storage, *code) : goneReply(*code);
}

} // namespace tarnwick
