"""The pages for the web browser."""

from flask import Blueprint, g, redirect, render_template, url_for

from tarnwick.fields import Refusal, link_code

pages = Blueprint("pages", __name__)

# Status, title and sentence of the page for each state of a link code.
LINK_OUTCOMES = {
    "approved": (200, "Desktop approved", "Go back to the Tarnwick app. It finishes linking within a few seconds."),
    "used": (200, "Desktop linked", "This code has done its work: the desktop is linked to your account."),
    "denied": (200, "Request denied", "The desktop was not linked. Its code cannot be used any more."),
    "replaced": (410, "A newer code exists", "The app has made a newer code. Use the one it shows now."),
    "expired": (410, "This code has expired", "Codes are good for 10 minutes. Generate a new one in the app."),
}
ALREADY_DECIDED = (409, "Already decided", "This code had been approved or denied before. Nothing was changed.")
DECISIONS = {"approve": "approved", "deny": "denied"}


def see_other(view, **values):
    return redirect(url_for(view, **values), 303)


@pages.get("/")
def home():
    store = g.store
    return render_template("home.html", account=store.account(), desktops=store.desktops(), projects=store.projects())


@pages.post("/desktops/<int(max=999999999):number>/revoke")
def revoke(number):
    if not g.store.revoke(number):
        raise Refusal(404, "No such desktop", "This desktop is not linked any more.")
    return see_other("pages.home")


@pages.get("/link/pc")
def link():
    typed = g.fields.get("code", "")
    if not typed:
        return render_template("link.html", typed="", is_unknown=False)
    code = g.store.link_code(link_code(typed))
    if code is None:
        return unknown_code(typed)
    if code["state"] == "pending":
        return render_template("confirm.html", code=code)
    return outcome_page(*LINK_OUTCOMES[code["state"]])


@pages.post("/link/pc")
def decide_link():
    typed = g.fields.get("code", "")
    code = link_code(typed)
    if g.store.link_code(code) is None:
        return unknown_code(typed)
    decision = DECISIONS.get(g.fields.get("decision"))
    if decision is None:
        raise Refusal(422, "No decision", "Choose Approve or Deny on the pairing page.")
    if g.store.settle(code, "pending", decision):
        return see_other("pages.link", code=code)
    # The code is no longer pending: report that.
    outcome = LINK_OUTCOMES[g.store.link_code(code)["state"]]
    return outcome_page(*(ALREADY_DECIDED if outcome[0] == 200 else outcome))


def unknown_code(typed):
    return render_template("link.html", typed=typed, is_unknown=True), 404


def outcome_page(status, title, message):
    return render_template("message.html", title=title, message=message), status


@pages.get("/recent")
def recent():
    return render_template("recent.html", projects=g.store.recent_projects())


def project_called(slug):
    found = g.store.project(slug)
    if found is None:
        raise Refusal(404, "No such GDPS", "There is no GDPS at this address. It may have been deleted.")
    return found


@pages.get("/gdps/<slug>")
def project(slug):
    return render_template("project.html", project=project_called(slug))


@pages.get("/gdps/<slug>/manage")
def manage(slug):
    return render_template("manage.html", project=project_called(slug))


@pages.post("/gdps/<slug>/status")
def change_status(slug):
    project_called(slug)
    status = g.fields.get("status")
    if status not in ("online", "maintenance"):
        raise Refusal(422, "No status", "The status must be online or maintenance.")
    g.store.set_status(slug, status)
    return see_other("pages.manage", slug=slug)


@pages.post("/gdps/<slug>/delete")
def delete(slug):
    project_called(slug)
    if g.fields.get("confirm") != "yes":
        raise Refusal(422, "Not deleted", "Check the box first: a deleted GDPS does not come back.")
    g.store.delete_project(slug)
    return see_other("pages.home")
