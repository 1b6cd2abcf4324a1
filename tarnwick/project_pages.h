#pragma once

#include "visit.h"

namespace tarnwick {

// GET /gdps/SLUG: what every player may see.
HttpReply showProject(Visit& visit);

// GET /recent: the newest publicly listed projects.
HttpReply showRecentProjects(Visit& visit);

// GET /gdps/SLUG/manage: the owner's page.
HttpReply manageProject(Visit& visit);

// POST /gdps/SLUG/status: on or off.
HttpReply changeProjectStatus(Visit& visit);

// POST /gdps/SLUG/delete: needs the box "confirm" to be checked.
HttpReply deleteProject(Visit& visit);

} // namespace tarnwick
