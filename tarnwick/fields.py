"""Reads and checks the fields of requests."""

import re
from urllib.parse import parse_qsl

from werkzeug.exceptions import HTTPException

from tarnwick.store import CODE_CHARACTERS, CODE_PREFIX

FORM_TYPE = "application/x-www-form-urlencoded"
MOST_FIELDS = 64
CONTROL = re.compile(r"[\x00-\x1f\x7f-\x9f]")
CONTROL_BUT_LINES = re.compile(r"[\x00-\x08\x0b-\x1f\x7f-\x9f]")
TYPED_CODE = re.compile(f"(?:{CODE_PREFIX})?([{CODE_CHARACTERS}]{{6}})")
COLOUR = re.compile("#(?:[0-9a-fA-F]{3}){1,2}")
PRESETS = ("balanced", "casual", "hardcore")

# For each text of a project: its name in messages, its maximum length, its forbidden characters, the rule as text.
TEXT_RULES = {
    "display_name": ("name", 80, CONTROL, "be one line without control characters"),
    "description": ("description", 4000, CONTROL_BUT_LINES, "not have control characters"),
    "emoji_badge": ("emoji badge", 6, CONTROL, "not have control characters"),
    "tags": ("tags", 140, CONTROL, "be one line without control characters"),
}


class Refusal(HTTPException):
    """Ends a request with a sentence for the user."""

    def __init__(self, code, title, message):
        super().__init__(message)
        self.code = code
        self.title = title


def read_fields(request):
    """The fields of a form or query. Flask's own parser would accept invalid UTF-8 and repeated fields."""
    if request.method == "POST" and request.mimetype != FORM_TYPE:
        raise Refusal(415, "Unsupported form", f"The request must be a form of type {FORM_TYPE}.")
    encoded = request.get_data() if request.method == "POST" else request.query_string
    try:
        text = encoded.decode()
        pairs = parse_qsl(text, keep_blank_values=True, errors="strict")
    except UnicodeDecodeError:
        raise unreadable("The form is not valid UTF-8 text.") from None
    if any("\0" in name + value for name, value in pairs):
        raise unreadable("The form is not valid UTF-8 text.")
    if len(pairs) > MOST_FIELDS:
        raise unreadable("The form has too many fields.")
    fields = dict(pairs)
    if len(fields) < len(pairs):
        raise unreadable("The form gives a field twice.")
    return fields


def unreadable(message):
    return Refusal(400, "Unreadable form", message)


def link_code(typed):
    """The code in its normal form; empty if the typed text cannot be a code."""
    match = TYPED_CODE.fullmatch(re.sub("[- ]", "", typed).upper())
    return f"{CODE_PREFIX}-{match[1]}" if match else ""


def device_id(fields):
    device = fields.get("device_id", "").strip()
    if not device:
        raise Refusal(422, "No device", "The request must name the device in device_id.")
    if len(device) > 200 or CONTROL.search(device):
        raise Refusal(422, "No device", "The device_id must be one line of 200 characters at most.")
    return device


def read_project(fields, cores):
    """The requested project as columns, and a sentence for each invalid field in the order of the fields."""
    project = {name: fields.get(name, "").strip() for name in (*TEXT_RULES, "accent_color")}
    project["description"] = re.sub("\r\n?", "\n", project["description"])
    project["emoji_badge"] = project["emoji_badge"] or "🔥"
    project["accent_color"] = project["accent_color"] or "#ff8f1f"
    project["preset_name"] = fields.get("preset_name", PRESETS[0])
    project["core_key"] = fields.get("core_key", cores[0])
    project["public_listing"] = "public_listing" in fields
    project["status"] = "maintenance" if "maintenance_mode" in fields else "online"

    faults = {}
    for name in ("display_name", "description", "emoji_badge"):
        faults[name] = text_fault(name, project[name])
    if not COLOUR.fullmatch(project["accent_color"]):
        faults["accent_color"] = "The accent must be a colour such as #ff8f1f."
    faults["tags"] = text_fault("tags", project["tags"])
    if project["preset_name"] not in PRESETS:
        faults["preset_name"] = "The preset must be balanced, casual or hardcore."
    if project["core_key"] not in cores:
        faults["core_key"] = "The core is not one of your account's cores."
    for name in ("public_listing", "maintenance_mode"):
        if fields.get(name, "true") != "true":
            faults[name] = f"The option {name} must be true or left out."
    return project, {name: fault for name, fault in faults.items() if fault}


def text_fault(name, text):
    what, most, control, rule = TEXT_RULES[name]
    if name == "display_name" and not text:
        return "Enter a name for the GDPS."
    if len(text) > most:
        return f"The {what} may have {most} characters at most."
    if control.search(text):
        return f"The {what} must {rule}."
    return None
