"""Generated texts and bytes in every field of every request."""

import html.parser
from urllib.parse import urlencode

from conftest import FORM_TOKEN, Visitor
from hypothesis import example, given
from hypothesis.strategies import binary, characters, dictionaries, lists, one_of, sampled_from, text
from markupsafe import escape

from tarnwick.store import Store

PATHS = "/ /link/pc /recent /desktops/1/revoke /gdps/neon-burst /gdps/neon-burst/manage /gdps/neon-burst/status".split()
PATHS += "/gdps/neon-burst/delete /api/pc/link/start /api/pc/link/poll /api/pc/me /api/pc/instances/create".split()
METHOD = sampled_from(["GET", "POST", "HEAD", "PUT", "OPTIONS"])
NAMES = ["code", "device_id", "decision", "status", "confirm", "display_name", "description", "emoji_badge", "tags"]

# Texts that would become a tag or an attribute if a page did not escape them.
LIVE = ["<evil>", '" evil="', "' evil='", "--><evil>", "&lt;evil>", "</title><evil>", "{{ evil }}"]
PRINTABLE = text(characters(blacklist_categories=["Cs", "Cc"]), max_size=20)
LIVE_TEXT = lists(one_of(sampled_from(LIVE), PRINTABLE), min_size=1, max_size=4).map("".join)
VALUE = one_of(
    sampled_from(["approve", "online", "yes"]), LIVE_TEXT, text(characters(blacklist_categories=["Cs"])), binary()
)


class Page(html.parser.HTMLParser):
    def handle_starttag(self, tag, attributes):
        assert "evil" not in (tag, *(name for name, _ in attributes))


def expect_an_answer(reply, path):
    assert reply.status_code < 500
    if reply.mimetype == "text/html":
        Page().feed(reply.text)
    if path.startswith("/api/") and reply.request.method != "HEAD":
        assert isinstance(reply.json, dict)


@given(METHOD, sampled_from(PATHS), dictionaries(sampled_from(NAMES), VALUE), binary())
def test_nothing_is_a_fault_inside_or_markup(method, path, fields, noise):
    visitor = Visitor(Store(":memory:"))
    form = urlencode({"form_token": FORM_TOKEN, **fields})
    for token, body in ((visitor.link(), form.encode()), (noise.decode("latin-1"), noise)):
        environ = {"QUERY_STRING": body.decode("latin-1"), "CONTENT_TYPE": "application/x-www-form-urlencoded"}
        environ |= {"HTTP_AUTHORIZATION": f"Bearer {token}", "HTTP_COOKIE": f"tarnwick_form={FORM_TOKEN}"}
        expect_an_answer(visitor.client.open(path, method=method, data=body, environ_overrides=environ), path)


def test_a_project_and_a_desktop_are_shown_as_text_everywhere():
    visitor = Visitor(Store(":memory:"))

    @given(LIVE_TEXT, LIVE_TEXT, LIVE_TEXT, LIVE_TEXT)
    @example("<evil>", "<evil>", "<evil>", "<evil>")
    def show(name, description, tags, device):
        fields = {"description": description, "emoji_badge": tags[:6], "tags": tags[:140], "public_listing": "true"}
        project = visitor.create(visitor.link(f"d{device}"), display_name=f"n{name[:79]}", **fields).json["instance"]
        code = visitor.start_link(f"d{device}")
        manage = f"/gdps/{project['slug']}/manage"
        for path in ("/", "/recent", manage, f"/gdps/{project['slug']}", f"/link/pc?code={code}"):
            page = visitor.get(path)
            expect_an_answer(page, path)
            assert path.startswith("/link") or str(escape(f"n{name[:79]}".strip())) in page.text
        visitor.send(f"/gdps/{project['slug']}/delete", confirm="yes")

    show()
