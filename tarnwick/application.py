"""The application: its checks before every request, and its error replies."""

import hmac
import re
import secrets
from contextlib import suppress
from urllib.parse import quote

from flask import Flask, g, jsonify, render_template, request
from werkzeug.exceptions import HTTPException, NotFound
from werkzeug.routing import RequestRedirect

from tarnwick import readable
from tarnwick.api import api
from tarnwick.fields import Refusal, read_fields
from tarnwick.pages import pages

OWN_HOST = re.compile(r"(127\.0\.0\.1|localhost|\[::1\])(:[0-9]{1,5})?", re.IGNORECASE)
FORM_COOKIE = "tarnwick_form"
FORM_TOKEN = re.compile("[0-9a-f]{64}")

# Titles and sentences of the errors that Flask raises itself.
FLASK_ERRORS = {
    404: ("Page not found", "There is nothing at this address."),
    405: ("Method not allowed", "This address does not take {method}."),
    500: ("Something went wrong", "Tarnwick could not finish the request. Try again later."),
}

SECURITY_HEADERS = {
    "Content-Security-Policy": "default-src 'none'; style-src 'self'; img-src 'self'; form-action 'self';"
    " base-uri 'none'; frame-ancestors 'none'",
    "X-Frame-Options": "DENY",
    "X-Content-Type-Options": "nosniff",
    # Not "no-referrer": browsers would then send "Origin: null" with the service's own forms.
    "Referrer-Policy": "same-origin",
    "Cache-Control": "no-store",
}


def create_app(store):
    app = Flask(__name__)
    app.json.ensure_ascii = False
    app.register_blueprint(api)
    app.register_blueprint(pages)
    app.add_template_filter(readable.duration)
    app.add_template_filter(readable.moment)
    for rule in app.url_map.iter_rules():
        if rule.rule.startswith("/api/"):
            # A HEAD of a poll would use up an approved code and lose its token.
            rule.methods.difference_update({"HEAD", "OPTIONS"})

    @app.before_request
    def guard():
        g.store = store
        g.form_token = kept_form_token() or secrets.token_hex(32)
        check_host()
        if isinstance(request.routing_exception, RequestRedirect):
            raise NotFound  # Werkzeug would redirect "//" to "/".
        if request.routing_exception is None:
            g.fields = read_fields(request)
            if request.method == "POST" and not is_for_programs():
                check_form()

    app.register_error_handler(HTTPException, refuse)
    app.after_request(finish)
    return app


def is_for_programs():
    return request.path.startswith("/api/")


def check_host():
    """Stops DNS rebinding: a web site could point a name of its own to this address and read the pages."""
    if not OWN_HOST.fullmatch(request.headers.get("Host", "")):
        message = "This service answers only under this machine's own address, such as 127.0.0.1."
        raise Refusal(421, "Wrong address", message)


def kept_form_token():
    """The form token in the browser's cookie; empty if it is missing or malformed."""
    cookie = request.cookies.get(FORM_COOKIE, "")
    return cookie if FORM_TOKEN.fullmatch(cookie) else ""


def check_form():
    """Stops cross-site requests: a page's form repeats the cookie, which no other site can read."""
    is_own_origin = request.headers.get("Origin", request.host_url[:-1]) == request.host_url[:-1]
    repeats_cookie = hmac.compare_digest(kept_form_token().encode(), g.fields.get("form_token", "").encode())
    if not (kept_form_token() and repeats_cookie and is_own_origin):
        message = "This form was not sent from a current page of this site. Go back and reload the page."
        raise Refusal(403, "Form expired", message)


def refuse(error):
    if isinstance(error, Refusal):
        title, message = error.title, error.description
    else:
        title, message = FLASK_ERRORS.get(error.code, (error.name, error.description))
        message = message.replace("{method}", request.method)
    response = error.get_response()
    if is_for_programs():
        response.data = jsonify(message=message).data
        response.content_type = "application/json"
    else:
        response.data = render_template("message.html", title=title, message=message, is_error=True)
    return response


def finish(response):
    for name, value in SECURITY_HEADERS.items():
        response.headers.setdefault(name, value)
    if response.mimetype == "text/html" and not kept_form_token():
        response.set_cookie(FORM_COOKIE, g.form_token, httponly=True, samesite="Strict")
    # Quoting keeps every path on one line. Queries contain codes, so they are not logged.
    with suppress(BrokenPipeError):  # The reader may have closed the pipe.
        print(quote(request.method), quote(request.path), response.status_code, flush=True)
    return response
