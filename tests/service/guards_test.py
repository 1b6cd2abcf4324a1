"""Requests that are refused before they reach a call or page."""

import re

import pytest
from conftest import ADDRESS, DEVICE, FORM_TOKEN, Visitor, answer
from werkzeug.test import create_environ, run_wsgi_app

from tarnwick.store import Store

START = "/api/pc/link/start"
FORM = "application/x-www-form-urlencoded"
COOKIE = "tarnwick_form=([0-9a-f]{64}); HttpOnly; Path=/; SameSite=Strict"
NOT_TEXT = 400, "The form is not valid UTF-8 text."
FOREIGN = "evil.example localhost.evil.example 127.0.0.1.evil.example 127.0.0.10 localhost:80:80 localhost:x [::2]"


def test_an_unknown_address_is_answered_in_json_or_with_a_page(visitor):
    for path in ("/api/pc/nothing", "/api/pc/me/", "/api/pc/ME", "/api/pc//me"):
        assert answer(visitor.get(path)) == (404, "There is nothing at this address.")
    for path in ("/nothing", "/gdps/", "/gdps/a/b", "/static/../store.py", "/line%0Abreak"):
        reply = visitor.get(path)
        assert (reply.status_code, reply.content_type) == (404, "text/html; charset=utf-8")


def test_a_wrong_method_or_type_is_told_the_right_one(visitor):
    for method, path, right in (("PUT", "/api/pc/me", "GET"), ("GET", START, "POST")):
        reply = visitor.open(method, path)
        assert answer(reply) == (405, f"This address does not take {method}.") and reply.headers["Allow"] == right
    for content_type in ("application/json", "text/plain", "multipart/form-data; boundary=x", ""):
        reply = visitor.post(START, "device_id=d", content_type=content_type)
        assert answer(reply) == (415, f"The request must be a form of type {FORM}.")


@pytest.mark.parametrize("encoded", [b"device_id=%ff", b"device_id=\xc3\x28", b"device_id=%00", b"%ed%a0%80=x"])
def test_a_form_is_text(visitor, encoded):
    query = {"QUERY_STRING": encoded.decode("latin-1")}
    assert answer(visitor.post(START, encoded, content_type=FORM)) == NOT_TEXT
    assert answer(visitor.get("/api/pc/link/poll", environ_overrides=query)) == NOT_TEXT
    page = visitor.get("/link/pc", environ_overrides=query)
    assert page.status_code == 400 and "<h1>Unreadable form</h1>" in page.text


def test_a_form_has_each_field_once_and_a_limited_number(visitor):
    reply = visitor.post(START, "device_id=a&device_id=b", content_type=FORM)
    assert answer(reply) == (400, "The form gives a field twice.")
    fields = {f"field {number}": "" for number in range(63)} | {"device_id": DEVICE}
    assert visitor.post(START, fields, content_type=f"{FORM}; charset=UTF-8").status_code == 200
    assert answer(visitor.post(START, fields | {"more": ""})) == (400, "The form has too many fields.")


def test_only_the_names_of_this_machine_are_answered(visitor):
    for host in ("127.0.0.1", "localhost", "LOCALHOST:80", "[::1]:8080"):
        assert visitor.get("/recent", headers={"Host": host}).status_code == 200
    sentence = "This service answers only under this machine's own address, such as 127.0.0.1."
    for host in (*FOREIGN.split(), "localhost, evil.example", "localhost\n", "", "a" * 300):
        environ = create_environ("/api/pc/me", environ_overrides={"HTTP_HOST": host})
        body, status, _ = run_wsgi_app(visitor.client.application, environ, buffered=True)
        assert status.startswith("421 ") and sentence in b"".join(body).decode()


def test_a_page_takes_only_its_own_form(visitor):
    for path in ("/link/pc", "/desktops/1/revoke", "/gdps/neon-burst/status", "/gdps/neon-burst/delete"):
        assert visitor.post(path, {"confirm": "yes"}).status_code == 403

    def status(cookie, field, **origin):
        headers = {"Cookie": f"other=1; tarnwick_form={cookie}", **origin}
        fields = {"status": "maintenance", "form_token": field}
        return visitor.post("/gdps/neon-burst/status", fields, headers=headers).status_code

    for cookie, field in ((FORM_TOKEN, ""), (FORM_TOKEN, "a" * 64), ("", FORM_TOKEN), ("guess", "guess"), ("", "")):
        assert status(cookie, field) == 403
    for origin in ("http://evil.example", "null", "http://127.0.0.1:1"):
        assert status(FORM_TOKEN, FORM_TOKEN, Origin=origin) == 403
    assert "online and ready" in visitor.read("/gdps/neon-burst")
    assert status(FORM_TOKEN, FORM_TOKEN) == status(FORM_TOKEN, FORM_TOKEN, Origin=ADDRESS) == 303


def test_a_browser_is_given_a_form_token_and_keeps_it(visitor):
    first = visitor.get("/gdps/neon-burst/manage")
    token = re.fullmatch(COOKIE, first.headers["Set-Cookie"])[1]
    assert first.text.count(f'name="form_token" value="{token}"') == 2
    again = visitor.get("/gdps/neon-burst/manage", headers={"Cookie": f"tarnwick_form={token}"})
    assert again.text == first.text and "Set-Cookie" not in again.headers
    assert token not in visitor.read("/gdps/neon-burst/manage")


def test_replies_tell_browsers_to_be_strict(visitor):
    names = ("X-Frame-Options", "X-Content-Type-Options", "Referrer-Policy", "Cache-Control")
    for path in ("/", "/nothing", "/api/pc/me"):
        headers = visitor.get(path).headers
        assert headers["Content-Security-Policy"].startswith("default-src 'none'; style-src 'self'; img-src 'self';")
        assert [headers[name] for name in names] == ["DENY", "nosniff", "same-origin", "no-store"]


def test_the_log_has_a_line_for_each_request_and_no_secrets(visitor, capsys):
    visitor.get("/nothing%1b[2J%0a", visitor.link("secret-device"))
    link = ["POST /api/pc/link/start 200", "POST /link/pc 303", "GET /api/pc/link/poll 200"]
    assert capsys.readouterr().out.splitlines() == [*link, "GET /nothing%1B%5B2J%0A 404"]


def test_a_fault_inside_is_a_reply_without_its_cause():
    visitor = Visitor(store := Store(":memory:"))
    token = visitor.link()
    store.run("DROP TABLE projects")
    page, reply = visitor.get("/recent"), visitor.get("/api/pc/me", token)
    assert answer(reply) == (500, "Tarnwick could not finish the request. Try again later.")
    assert page.status_code == 500 and reply.json["message"] in page.text and "no such table" not in page.text
