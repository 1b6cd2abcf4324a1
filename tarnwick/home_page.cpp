#include "home_page.h"

#include "accounts.h"
#include "page_reply.h"
#include "page_template.h"
#include "readable_time.h"
#include "schema.h"

#include <charconv>

namespace tarnwick {

namespace {

std::string desktopsHtml(const Visit& visit)
{
    std::string rows;
    for (const LinkedDesktop& desktop : visit.storage.tokens.linkedDesktops(ownerAccountId)) {
        rows += renderTemplate("home_desktop", {{"id", std::to_string(desktop.id)},
                                                {"device", desktop.deviceId},
                                                {"linked_at", readableMoment(desktop.linkedAt)},
                                                {"last_seen_at", readableMoment(desktop.lastSeenAt)},
                                                {"form_token", visit.formToken.value}});
    }
    return rows.empty() ? renderTemplate("home_no_desktops", {}) : renderTemplate("list", {{"rows", rows}});
}

std::string projectsHtml(const Visit& visit)
{
    std::string rows;
    for (const Instance& project : visit.storage.instances.ofAccount(ownerAccountId)) {
        rows += renderTemplate("home_project", {{"slug", project.slug},
                                                {"name", project.displayName},
                                                {"emoji", project.emojiBadge},
                                                {"core", project.coreLabel},
                                                {"status", project.status}});
    }
    return rows.empty() ? renderTemplate("home_no_projects", {}) : renderTemplate("list", {{"rows", rows}});
}

// 0, which no desktop has, for anything that is not a number.
std::int64_t numberFrom(const std::string& text)
{
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? number : 0;
}

} // namespace

HttpReply showHome(Visit& visit)
{
    const Account account = loadAccount(visit.storage.database, ownerAccountId);
    const std::string content = renderTemplate("home", {{"name", account.displayName},
                                                        {"plan", account.planName},
                                                        {"limit", account.limitLabel()},
                                                        {"desktops", desktopsHtml(visit)},
                                                        {"projects", projectsHtml(visit)}});
    return pageReply(visit, 200, "Your account", content);
}

HttpReply revokeDesktop(Visit& visit)
{
    if (!visit.storage.tokens.revoke(ownerAccountId, numberFrom(visit.argument))) {
        return errorPage(404, "No such desktop", "This desktop is not linked any more.");
    }
    return redirectReply("/");
}

} // namespace tarnwick
