#include "account_api.h"

#include "accounts.h"
#include "instance_form.h"
#include "json_reply.h"
#include "text.h"

#include <nlohmann/json.hpp>

#include <functional>

namespace tarnwick {

namespace {

HttpReply unauthorized(const std::string& message)
{
    HttpReply reply = jsonMessage(401, message);
    reply.headers.emplace_back("WWW-Authenticate", "Bearer");
    return reply;
}

// Empty when the request carries none.
std::string bearerToken(const HttpRequest& request)
{
    constexpr std::string_view scheme = "Bearer ";
    const std::string header = request.header("Authorization");
    const bool isBearer = equalIgnoringCase(std::string_view(header).substr(0, scheme.size()), scheme);
    return isBearer ? trimmed(std::string_view(header).substr(scheme.size())) : std::string();
}

HttpReply withAccount(Visit& visit, const std::function<HttpReply(std::int64_t)>& answer)
{
    const std::string token = bearerToken(visit.request);
    if (token.empty()) {
        return unauthorized("The request carries no access token. Link this desktop first.");
    }
    const TokenCheck check = visit.storage.tokens.check(token);
    switch (check.outcome) {
    case TokenCheck::Outcome::Valid:
        return answer(check.accountId);
    case TokenCheck::Outcome::Revoked:
        return unauthorized("The link of this desktop was revoked. Link it again.");
    case TokenCheck::Outcome::Unknown:
        break;
    }
    return unauthorized("The access token is not valid. Link this desktop again.");
}

nlohmann::json instanceJson(const Instance& instance, const std::string& baseUrl)
{
    const std::string publicUrl = baseUrl + "/gdps/" + instance.slug;
    return {{"core_label", instance.coreLabel},
            {"display_name", instance.displayName},
            {"manage_url", publicUrl + "/manage"},
            {"public_url", publicUrl},
            {"slug", instance.slug},
            {"status", instance.status},
            {"description", instance.description},
            {"emoji_badge", instance.emojiBadge},
            {"accent_color", instance.accentColor},
            {"tags", instance.tags},
            {"preset_name", instance.presetName},
            {"core_key", instance.coreKey},
            {"public_listing", instance.publicListing}};
}

// The first sentence is the one a client shows; `errors` has all of them by field.
HttpReply faultsReply(const InstanceForm& form)
{
    nlohmann::json errors = nlohmann::json::object();
    for (const auto& [field, sentence] : form.faults) {
        errors[field] = sentence;
    }
    return jsonReply(422, {{"message", form.faults.front().second}, {"errors", errors}});
}

HttpReply limitReply(const Account& account)
{
    return jsonMessage(403, "The " + account.planName + " plan allows " + std::to_string(account.gdpsLimit) +
                                " GDPS and you have " + std::to_string(account.gdpsCount) + ".");
}

HttpReply createdReply(const Instance& instance, const std::string& baseUrl)
{
    const std::string ending = instance.online() ? " is online." : " was created in maintenance mode.";
    return jsonReply(201, {{"instance", instanceJson(instance, baseUrl)}, {"message", instance.displayName + ending}});
}

} // namespace

HttpReply showSession(Visit& visit)
{
    return withAccount(visit, [&visit](std::int64_t accountId) {
        const Account account = loadAccount(visit.storage.database, accountId);
        nlohmann::json cores = nlohmann::json::array();
        for (const Core& core : availableCores(visit.storage.database)) {
            cores.push_back({{"key", core.key}, {"label", core.label}});
        }
        return jsonReply(200, {{"user",
                                {{"display_name", account.displayName},
                                 {"plan_name", account.planName},
                                 {"gdps_limit_label", account.limitLabel()}}},
                               {"available_cores", cores}});
    });
}

HttpReply listInstances(Visit& visit)
{
    return withAccount(visit, [&visit](std::int64_t accountId) {
        nlohmann::json instances = nlohmann::json::array();
        for (const Instance& instance : visit.storage.instances.ofAccount(accountId)) {
            instances.push_back(instanceJson(instance, visit.baseUrl()));
        }
        return jsonReply(200, {{"instances", instances}});
    });
}

HttpReply createInstance(Visit& visit)
{
    return withAccount(visit, [&visit](std::int64_t accountId) {
        const InstanceForm form = readInstanceForm(visit.form, availableCores(visit.storage.database));
        if (!form.faults.empty()) {
            return faultsReply(form);
        }
        const auto created = visit.storage.instances.create(accountId, form.wanted);
        return created ? createdReply(*created, visit.baseUrl())
                       : limitReply(loadAccount(visit.storage.database, accountId));
    });
}

} // namespace tarnwick
