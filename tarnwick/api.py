"""The five API calls of the desktop client."""

from functools import wraps

from flask import Blueprint, g, request, url_for

from tarnwick import readable
from tarnwick.fields import Refusal, device_id, link_code, read_project
from tarnwick.store import CODE_LIFE

api = Blueprint("api", __name__, url_prefix="/api/pc")

CODE_IS_GONE = {
    "denied": "was denied on the pairing page.",
    "replaced": "was replaced by a newer one.",
    "expired": "has expired. Generate a new one.",
}


@api.post("/link/start")
def start_link():
    code = g.store.start_link(device_id(g.fields))
    return {
        "code": code,
        "approve_url": url_for("pages.link", code=code, _external=True),
        "expires_in": CODE_LIFE // 1000,
        "message": f"Approve code {code} within {readable.duration(CODE_LIFE)}.",
    }


@api.get("/link/poll")
def poll_link():
    if "code" not in g.fields:
        raise Refusal(422, "No code", "The request must name the link code in code.")
    device = device_id(g.fields)
    found = g.store.link_code(link_code(g.fields["code"]))
    # Only the device that asked for a code may see its state.
    if found is None or found["device_id"] != device:
        raise Refusal(404, "Unknown code", "This link code is unknown. Generate a new one.")
    code, state = found["code"], found["state"]
    if state == "pending":
        left = readable.duration(found["left"])
        message = f"Waiting for approval. Code {code} is good for another {left}."
        return {"message": message, "expires_in": -(-found["left"] // 1000)}, 202
    token = g.store.collect_token(code) if state == "approved" else None
    if token is None:
        raise Refusal(410, "Code is gone", f"Link code {code} {CODE_IS_GONE.get(state, 'has already been used.')}")
    return {"access_token": token, "message": f"This desktop is now linked to {g.store.account()['display_name']}."}


def with_token(view):
    """Refuses requests without the token of a linked desktop."""

    @wraps(view)
    def guarded():
        scheme, _, token = request.headers.get("Authorization", "").partition(" ")
        token = token.strip() if scheme.lower() == "bearer" else ""
        desktop = g.store.desktop_of(token)
        if not token:
            message = "The request carries no access token. Link this desktop first."
        elif desktop is None:
            message = "The access token is not valid. Link this desktop again."
        elif desktop["revoked"]:
            message = "The link of this desktop was revoked. Link it again."
        else:
            return view()
        return {"message": message}, 401, {"WWW-Authenticate": "Bearer"}

    return guarded


@api.get("/me")
@with_token
def show_session():
    account = g.store.account()
    return {
        "user": {
            "display_name": account["display_name"],
            "plan_name": account["plan_name"],
            "gdps_limit_label": f"{account['gdps_count']} of {account['gdps_limit']}",
        },
        "available_cores": [dict(core) for core in g.store.cores()],
    }


@api.get("/instances")
@with_token
def list_instances():
    return {"instances": [instance(project) for project in g.store.projects()]}


@api.post("/instances/create")
@with_token
def create_instance():
    values, errors = read_project(g.fields, [core["key"] for core in g.store.cores()])
    if errors:
        return {"message": next(iter(errors.values())), "errors": errors}, 422
    project = g.store.create_project(values)
    if project is None:
        account = g.store.account()
        plan, limit, count = account["plan_name"], account["gdps_limit"], account["gdps_count"]
        raise Refusal(403, "Limit reached", f"The {plan} plan allows {limit} GDPS and you have {count}.")
    outcome = "is online." if project["status"] == "online" else "was created in maintenance mode."
    return {"instance": instance(project), "message": f"{project['display_name']} {outcome}"}, 201


def instance(project):
    """A project as JSON."""
    return {
        **{name: project[name] for name in project.keys() if name not in ("id", "created_at")},
        "public_listing": bool(project["public_listing"]),
        "public_url": url_for("pages.project", slug=project["slug"], _external=True),
        "manage_url": url_for("pages.manage", slug=project["slug"], _external=True),
    }
