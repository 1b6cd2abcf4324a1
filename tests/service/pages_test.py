"""The pages of the account and its projects."""

import pytest
from conftest import DEVICE, answer

PARTS = {
    "/link/pc": ['<form method="get" action="/link/pc">', ">Continue<"],
    "/": ["<h1>Robin Vale</h1>", "<dd>Creator</dd>", "<dd>2 of 5</dd>", "No desktop is linked.", "Cube Garden"],
    "/gdps/neon-burst": ["is online and ready", "Bright levels,", "<bdi>neon</bdi>", 'fill="#ff8f1f"'],
    "/gdps/cube-garden": ["<bdi>Cube Garden</bdi>", "is under maintenance."],
    "/gdps/cube-garden/manage": ["Shown in the public recent list", "2 January 2026, 03:04 UTC", "Switch on"],
    "/static/tarnwick.css": ["--accent: #ff8f1f;"],
}


@pytest.mark.parametrize("path", PARTS)
def test_a_page_says(visitor, path):
    page = visitor.read(path)
    assert [part for part in PARTS[path] if part not in page] == []


def test_revoking_ends_one_desktop_only_and_once(visitor, clock):
    tokens = [visitor.link(), visitor.link("another desktop")]
    clock.advance(minutes=95)
    visitor.get("/api/pc/me", tokens[0])
    assert "Linked 2 January 2026, 03:04 UTC. Last seen 2 January 2026, 04:39 UTC." in visitor.read("/")
    reply = visitor.send("/desktops/1/revoke")
    assert (reply.status_code, reply.headers["Location"]) == (303, "/")
    replies = [visitor.get("/api/pc/me", headers={"Authorization": f"bEARER {token}"}) for token in tokens]
    assert answer(replies[0]) == (401, "The link of this desktop was revoked. Link it again.")
    assert replies[1].status_code == 200
    page = visitor.read("/")
    assert DEVICE not in page and "another desktop" in page
    for number in ("1", "3", "0", "-1", "x", "99999999999999999999"):
        assert visitor.send(f"/desktops/{number}/revoke").status_code == 404


def test_a_project_is_switched_off_and_on(visitor):
    for status, sentence in (("maintenance", "Switch on"), ("online", "Switch off for maintenance")):
        reply = visitor.send("/gdps/neon-burst/status", status=status)
        assert (reply.status_code, reply.headers["Location"]) == (303, "/gdps/neon-burst/manage")
        assert sentence in visitor.read("/gdps/neon-burst/manage")
    assert visitor.send("/gdps/neon-burst/status", status="broken").status_code == 422


def test_a_project_is_deleted_after_the_box_is_checked(visitor):
    for slug in ("neon-burst", "cube-garden"):
        pages, forms = (f"/gdps/{slug}", f"/gdps/{slug}/manage"), (f"/gdps/{slug}/status", f"/gdps/{slug}/delete")
        assert visitor.send(forms[1]).status_code == 422
        assert [visitor.get(path).status_code for path in pages] == [200, 200]
        reply = visitor.send(forms[1], confirm="yes")
        assert (reply.status_code, reply.headers["Location"]) == (303, "/")
        assert [visitor.get(path).status_code for path in pages] == [404, 404]
        assert [visitor.send(path, confirm="yes", status="online").status_code for path in forms] == [404, 404]
    assert "There is no GDPS yet." in visitor.read("/")
    assert "No GDPS is listed at the moment." in visitor.read("/recent")


def test_recent_lists_the_newest_public_projects_first(visitor, token):
    visitor.create(token, display_name="Hidden")
    visitor.create(token, display_name="Listed", public_listing="true")
    page = visitor.read("/recent")
    assert "Hidden" not in page
    assert page.index("Listed") < page.index("Cube Garden") < page.index("Neon Burst")
