"""Session, list and creation."""

import pytest
from conftest import ADDRESS, answer, at_once

NO_TOKEN = "The request carries no access token. Link this desktop first."
BAD_TOKEN = "The access token is not valid. Link this desktop again."
COLOUR = "The accent must be a colour such as #ff8f1f."


def test_a_session_tells_user_and_cores_and_counts_the_projects(visitor, token):
    session = visitor.get("/api/pc/me", token).json
    assert session["user"] == {"display_name": "Robin Vale", "plan_name": "Creator", "gdps_limit_label": "2 of 5"}
    cores = {"gdps-2.2": "GDPS 2.2", "gdps-2.1": "GDPS 2.1", "gdps-1.9": "GDPS 1.9"}
    assert session["available_cores"] == [{"key": key, "label": label} for key, label in cores.items()]
    visitor.create(token)
    assert visitor.get("/api/pc/me", token).json["user"]["gdps_limit_label"] == "3 of 5"


def test_the_list_has_the_projects_in_the_order_of_their_creation(visitor, token):
    for name in ("Zulu", "Alpha"):
        visitor.create(token, display_name=name)
    instances = visitor.get("/api/pc/instances", token).json["instances"]
    assert [each["slug"] for each in instances] == ["neon-burst", "cube-garden", "zulu", "alpha"]
    page = f"{ADDRESS}/gdps/neon-burst"
    shown = {"display_name": "Neon Burst", "slug": "neon-burst", "core_label": "GDPS 2.2", "status": "online"}
    addresses = {"public_url": page, "manage_url": f"{page}/manage"}
    design = {"emoji_badge": "🔥", "accent_color": "#ff8f1f", "tags": "neon, events", "preset_name": "balanced"}
    rest = {"core_key": "gdps-2.2", "public_listing": True, "description": instances[0]["description"]}
    assert instances[0] == {**shown, **addresses, **design, **rest}


@pytest.mark.parametrize("header", ["", "Bearer ", "Basic dXNlcjpwYXNz", "Bearer 0000", "Bearer \xff\xfe"])
def test_a_call_without_a_good_token_is_refused(visitor, header):
    sentence = BAD_TOKEN if header[:8] in ("Bearer 0", "Bearer \xff") else NO_TOKEN
    for method, call in (("GET", "me"), ("GET", "instances"), ("POST", "instances/create")):
        fields = {"display_name": "A"} if method == "POST" else None
        reply = visitor.open(method, f"/api/pc/{call}", fields, headers={"Authorization": header})
        assert answer(reply) == (401, sentence) and reply.headers["WWW-Authenticate"] == "Bearer"


def test_a_name_is_enough(visitor, token):
    reply = visitor.create(token)
    created = reply.json["instance"]
    assert answer(reply) == (201, "Star Field is online.") and "🔥" in reply.text
    assert created == visitor.get("/api/pc/instances", token).json["instances"][-1]
    defaults = {"core_label": "GDPS 2.2", "emoji_badge": "🔥", "accent_color": "#ff8f1f", "preset_name": "balanced"}
    assert created == {**created, **defaults, "slug": "star-field", "public_listing": False, "description": ""}


def test_every_field_is_kept_up_to_the_longest_text(visitor, token):
    fields = {"emoji_badge": "👩‍🚀", "accent_color": "#0aF", "tags": "t, " * 46 + "tt", "preset_name": "hardcore"}
    fields |= {"display_name": "ж" * 80, "description": "x" * 3991 + "\nsecond\tl", "core_key": "gdps-1.9"}
    sent = {**fields, "display_name": f" {'ж' * 80} ", "description": fields["description"].replace("\n", "\r\n")}
    reply = visitor.create(token, **sent, public_listing="true", maintenance_mode="true")
    assert answer(reply) == (201, f"{'ж' * 80} was created in maintenance mode.")
    created = reply.json["instance"]
    assert created == {**created, **fields, "public_listing": True, "status": "maintenance"}


@pytest.mark.parametrize(
    "name, text, sentence",
    [
        ("display_name", "   ", "Enter a name for the GDPS."),
        ("display_name", "ж" * 81, "The name may have 80 characters at most."),
        ("display_name", "one\ntwo", "The name must be one line without control characters."),
        ("description", "x" * 4001, "The description may have 4000 characters at most."),
        ("description", "a bell \x07 rings", "The description must not have control characters."),
        ("emoji_badge", "🔥" * 7, "The emoji badge may have 6 characters at most."),
        ("emoji_badge", "a\nb", "The emoji badge must not have control characters."),
        *[("accent_color", text, COLOUR) for text in ("orange", "ff8f1f", "#ff8f1", "#ff8f1g", "#ff8f1f00")],
        ("tags", "t" * 141, "The tags may have 140 characters at most."),
        ("tags", "a\nb", "The tags must be one line without control characters."),
        *[("preset_name", text, "The preset must be balanced, casual or hardcore.") for text in ("", "Balanced")],
        *[("core_key", text, "The core is not one of your account's cores.") for text in ("", "GDPS 2.2")],
        ("public_listing", "false", "The option public_listing must be true or left out."),
        ("maintenance_mode", "", "The option maintenance_mode must be true or left out."),
    ],
)
def test_a_faulty_field_is_refused_and_nothing_created(visitor, token, name, text, sentence):
    reply = visitor.create(token, **{name: text})
    assert (reply.status_code, reply.json) == (422, {"message": sentence, "errors": {name: sentence}})
    assert len(visitor.get("/api/pc/instances", token).json["instances"]) == 2


def test_every_fault_is_named_and_the_forms_first_is_the_message(visitor, token):
    reply = visitor.create(token, preset_name="none", accent_color="red", display_name="")
    assert answer(reply) == (422, "Enter a name for the GDPS.")
    assert set(reply.json["errors"]) == {"display_name", "accent_color", "preset_name"}


def test_the_plans_limit_ends_creating_even_for_requests_at_the_same_time(visitors):
    token = visitors[0].link()
    assert at_once(visitors, lambda visitor: visitor.create(token)) == [201] * 3 + [403] * 5
    assert answer(visitors[0].create(token)) == (403, "The Creator plan allows 5 GDPS and you have 5.")


def test_a_slug_is_made_from_the_name(visitor, token):
    for name, slug in {"NEON  burst!": "neon-burst-2", "Ночь": "gdps", "a" * 80: "a" * 48}.items():
        assert visitor.create(token, display_name=name).json["instance"]["slug"] == slug
