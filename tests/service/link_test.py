"""Link codes, in the API and on the pairing page."""

import re

import pytest
from conftest import DEVICE, answer, at_once

START = "/api/pc/link/start"
UNKNOWN = 404, "This link code is unknown. Generate a new one."


def test_a_start_gives_a_code_and_its_page_at_the_address_that_the_client_used(visitor):
    for host in ("127.0.0.1:8765", "localhost:4444"):
        reply = visitor.post(START, {"device_id": DEVICE}, headers={"Host": host})
        code = reply.json["code"]
        assert re.fullmatch("TWPC-[A-HJ-NP-Z2-9]{6}", code)
        page = f"http://{host}/link/pc?code={code}"
        message = f"Approve code {code} within 10 minutes."
        assert reply.json == {"code": code, "approve_url": page, "expires_in": 600, "message": message}
        assert reply.content_type == "application/json"


def test_a_device_is_one_line_of_limited_length_and_a_poll_names_its_code(visitor):
    assert answer(visitor.get("/api/pc/link/poll")) == (422, "The request must name the link code in code.")
    assert visitor.post(START, {"device_id": "d" * 200}).status_code == 200
    for device in ("", "  "):
        expected = 422, "The request must name the device in device_id."
        assert answer(visitor.post(START, {"device_id": device})) == expected
        assert answer(visitor.get(f"/api/pc/link/poll?code=TWPC-ABCDEF&device_id={device}")) == expected
    for device in ("d" * 201, "one\ntwo", "bell\x07"):
        expected = 422, "The device_id must be one line of 200 characters at most."
        assert answer(visitor.post(START, {"device_id": device})) == expected


def test_a_code_is_good_for_exactly_ten_minutes_and_remembered_for_a_day(visitor, clock):
    code = visitor.start_link()
    waiting = f"Waiting for approval. Code {code} is good for another"
    clock.advance(milliseconds=1500)
    reply = visitor.poll(code)
    assert answer(reply) == (202, f"{waiting} 9 minutes 59 seconds.")
    assert reply.json["expires_in"] == 599
    clock.advance(minutes=10, milliseconds=-1501)
    assert answer(visitor.poll(code)) == (202, f"{waiting} 1 second.")
    expired = 410, f"Link code {code} has expired. Generate a new one."
    for minutes, milliseconds, expected in ((0, 1, expired), (24 * 60 - 10, 0, expired), (0, 1, UNKNOWN)):
        clock.advance(minutes, milliseconds)
        visitor.start_link("another device")
        assert answer(visitor.poll(code)) == expected


def test_a_code_may_be_typed_in_many_ways(visitor):
    for shape in ("twpc-{}", "TWPC{}", "{}", " twpc {} ", "TWPC--{}"):
        code = visitor.start_link()
        typed = shape.format(code[5:].lower())
        assert visitor.poll(typed).status_code == 202
        assert f'value="{code}" readonly' in visitor.read(f"/link/pc?code={typed}")
        assert visitor.decide(typed).status_code == 303


def test_an_approved_code_gives_its_token_once(visitor):
    code = visitor.start_link()
    page = visitor.read(f"/link/pc?code={code}")
    for part in (f'value="{code}" readonly', f"<bdi>{DEVICE}</bdi>", "10 minutes", ">Approve<", ">Deny<"):
        assert part in page
    assert [visitor.decide(code, wrong).status_code for wrong in ("", "maybe", "Approve")] == [422] * 3
    decision = visitor.decide(code)
    assert (decision.status_code, decision.headers["Location"]) == (303, f"/link/pc?code={code}")
    assert "<h1>Desktop approved</h1>" in visitor.read(f"/link/pc?code={code}")
    head = visitor.client.head(f"/api/pc/link/poll?code={code}&device_id={DEVICE}")
    assert (head.status_code, head.headers["Allow"]) == (405, "GET")
    reply = visitor.poll(code)
    assert answer(reply) == (200, "This desktop is now linked to Robin Vale.")
    assert re.fullmatch("[0-9a-f]{64}", reply.json["access_token"])
    assert visitor.get("/api/pc/me", reply.json["access_token"]).status_code == 200
    assert visitor.poll(code).json == {"message": f"Link code {code} has already been used."}


@pytest.mark.parametrize("attempt", range(5))
def test_of_requests_at_the_same_time_one_approves_a_code_and_one_gets_its_token(visitors, attempt):
    code = visitors[0].start_link()
    assert at_once(visitors, lambda visitor: visitor.decide(code)) == [303] + [409] * 7
    assert at_once(visitors, lambda visitor: visitor.poll(code)) == [200] + [410] * 7


def test_a_code_that_is_over_says_why_and_cannot_be_approved(visitor, clock):
    codes = [visitor.start_link(f"device {number}") for number in range(6)]
    for number in (1, 3, 5):
        visitor.decide(codes[number])
    visitor.decide(codes[0], "deny")
    visitor.poll(codes[1], "device 1")
    visitor.start_link("device 2")
    visitor.start_link("device 3")
    clock.advance(minutes=10)
    replaced = "was replaced by a newer one.", "A newer code exists", 410
    expired = "has expired. Generate a new one.", "This code has expired", 410
    over = [
        ("was denied on the pairing page.", "Request denied", 200),
        ("has already been used.", "Desktop linked", 200),
    ]
    for number, (sentence, title, status) in enumerate(over + [replaced] * 2 + [expired] * 2):
        page, decision = visitor.get(f"/link/pc?code={codes[number]}"), visitor.decide(codes[number])
        assert page.status_code == status and f"<h1>{title}</h1>" in page.text
        assert decision.status_code == (409 if status == 200 else 410)
        assert f"<h1>{'Already decided' if status == 200 else title}</h1>" in decision.text
        assert answer(visitor.poll(codes[number], f"device {number}")) == (410, f"Link code {codes[number]} {sentence}")


def test_a_code_of_nobody_or_of_another_device_is_unknown(visitor):
    assert answer(visitor.poll(visitor.start_link("another device"))) == UNKNOWN
    for code in ("TWPC-AAAAAA", "TWPC-", "TWPC-AAAAAAA", "TWPC-AAAA0O", "<script>"):
        assert answer(visitor.poll(code)) == UNKNOWN
        for reply in (visitor.get("/link/pc", query_string={"code": code}), visitor.decide(code)):
            assert reply.status_code == 404 and "There is no such code." in reply.text


def test_linking_a_device_again_ends_its_old_token(visitor):
    first, other, second = visitor.link(), visitor.link("another device"), visitor.link()
    assert [visitor.get("/api/pc/me", token).status_code for token in (first, other, second)] == [401, 200, 200]
