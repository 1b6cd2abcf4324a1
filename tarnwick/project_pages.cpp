#include "project_pages.h"

#include "page_reply.h"
#include "page_template.h"
#include "readable_time.h"
#include "schema.h"
#include "text.h"

#include <string_view>

namespace tarnwick {

namespace {

HttpReply noSuchProject()
{
    return errorPage(404, "No such GDPS", "There is no GDPS at this address. It may have been deleted.");
}

std::string tagsHtml(std::string_view tags)
{
    std::string items;
    while (!tags.empty()) {
        const std::size_t end = tags.find(',');
        if (const std::string tag = trimmed(tags.substr(0, end)); !tag.empty()) {
            items += renderTemplate("project_tag", {{"tag", tag}});
        }
        tags.remove_prefix(end == std::string_view::npos ? tags.size() : end + 1);
    }
    return items.empty() ? "" : renderTemplate("project_tags", {{"tags", items}});
}

std::string descriptionHtml(const Instance& project)
{
    return project.description.empty() ? "" : renderTemplate("project_description", {{"text", project.description}});
}

// The part that the public page and the management page share.
std::string headHtml(const Instance& project)
{
    return renderTemplate("project_head", {{"name", project.displayName},
                                           {"emoji", project.emojiBadge},
                                           {"accent", project.accentColor},
                                           {"core", project.coreLabel},
                                           {"status", project.status}});
}

std::string statusChoice(const Visit& visit, const Instance& project)
{
    return renderTemplate(project.online() ? "project_switch_off" : "project_switch_on",
                          {{"slug", project.slug}, {"form_token", visit.formToken.value}});
}

HttpReply managementPage(const Visit& visit, int status, const Instance& project, const std::string& notice)
{
    const std::string content = renderTemplate(
        "project_manage", {{"head", headHtml(project)},
                           {"notice", notice.empty() ? "" : renderTemplate("notice", {{"text", notice}})},
                           {"slug", project.slug},
                           {"preset", project.presetName},
                           {"accent", project.accentColor},
                           {"listing", project.publicListing ? "Shown in the public recent list" : "Not listed"},
                           {"created_at", readableMoment(project.createdAt)},
                           {"switch", statusChoice(visit, project)},
                           {"form_token", visit.formToken.value}});
    return pageReply(visit, status, "Manage " + project.displayName, content);
}

std::string managementPath(const Instance& project)
{
    return "/gdps/" + project.slug + "/manage";
}

} // namespace

HttpReply showProject(Visit& visit)
{
    const auto project = visit.storage.instances.find(visit.argument);
    if (!project) {
        return noSuchProject();
    }
    const std::string state = project->online() ? "This GDPS is online and ready for players."
                                                : "This GDPS is under maintenance. Come back a little later.";
    const std::string content = renderTemplate("project", {{"head", headHtml(*project)},
                                                           {"state", state},
                                                           {"description", descriptionHtml(*project)},
                                                           {"tags", tagsHtml(project->tags)},
                                                           {"preset", project->presetName},
                                                           {"slug", project->slug}});
    return pageReply(visit, 200, project->displayName, content);
}

HttpReply showRecentProjects(Visit& visit)
{
    std::string rows;
    for (const Instance& project : visit.storage.instances.recentPublic()) {
        rows += renderTemplate("recent_project", {{"slug", project.slug},
                                                  {"name", project.displayName},
                                                  {"emoji", project.emojiBadge},
                                                  {"core", project.coreLabel},
                                                  {"status", project.status}});
    }
    const std::string list =
        rows.empty() ? renderTemplate("recent_none", {}) : renderTemplate("list", {{"rows", rows}});
    return pageReply(visit, 200, "Recent GDPS", renderTemplate("recent", {{"list", list}}));
}

HttpReply manageProject(Visit& visit)
{
    const auto project = visit.storage.instances.find(visit.argument);
    return project ? managementPage(visit, 200, *project, "") : noSuchProject();
}

HttpReply changeProjectStatus(Visit& visit)
{
    const auto project = visit.storage.instances.find(visit.argument);
    if (!project) {
        return noSuchProject();
    }
    const std::string status = visit.form.value("status");
    if (status != statusOnline && status != statusMaintenance) {
        return managementPage(visit, 422, *project, "The status must be online or maintenance.");
    }
    visit.storage.instances.setStatus(ownerAccountId, project->slug, status);
    return redirectReply(managementPath(*project));
}

HttpReply deleteProject(Visit& visit)
{
    const auto project = visit.storage.instances.find(visit.argument);
    if (!project) {
        return noSuchProject();
    }
    if (visit.form.value("confirm") != "yes") {
        return managementPage(visit, 422, *project, "Check the box first: a deleted GDPS does not come back.");
    }
    visit.storage.instances.remove(ownerAccountId, project->slug);
    return redirectReply("/");
}

} // namespace tarnwick
