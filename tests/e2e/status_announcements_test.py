"""Each new text in the status card is announced to screen readers."""

import os
import re
import unittest

from harness.client_process import REPOSITORY
from harness.control import Atspi, Control, unless_gone
from harness.gate import Gate
from harness.page_visitor import PageVisitor
from harness.scenario import DEVICE, Scenario
from harness.waiting import wait_until

START, POLL = "/api/pc/link/start", "/api/pc/link/poll"
SESSION, PROJECTS, CREATE = "/api/pc/me", "/api/pc/instances", "/api/pc/instances/create"


# What changes the status text.


def press(button):
    return lambda test: test.window.press(button)


def create(name, accent="#ff8f1f"):
    """Fills in the form and sends it."""

    def fill_in_and_send(test):
        test.window.field("GDPS Name").set_text(name)
        test.window.field("Accent").set_text(accent)
        test.window.press("Create GDPS")

    return fill_in_and_send


def let(path):
    """The service replies."""
    return lambda test: test.gate.let_through(path)


def answer(path, status, **values):
    """The reply is one that the local service never sends."""
    return lambda test: test.gate.answer(path, status, values)


def hang_up(path):
    """The connection closes without a reply."""
    return lambda test: test.gate.hang_up(path)


def go_away(test):
    """The service is stopped."""
    test.gate.close()


def decide(decision):
    return lambda test: PageVisitor().decide(f"{test.service.address}/link/pc?code={test.code}", decision)


def revoke(test):
    """Links the same device again, which revokes its earlier link."""
    PageVisitor().link(test.service.address, DEVICE)


REQUESTING = press("Generate Link Code"), "Requesting a new Tarnwick PC link code..."
READY = let(START), "Code {code} is ready. Approve it at {host}/link/pc before it expires."
REFRESHING = press("Refresh"), "Refreshing your Tarnwick projects..."
CREATING = create("Sunset Arcade"), "Creating your GDPS from the Tarnwick desktop client..."

# The end of a sequence: an earlier, unexpected announcement would be found first.
NOTHING_ELSE = "nothing else"

# Every text of the status card after its cause, in the order in which a user sees them. {code} is the link code, {host}
# the service's public host, and … any text, as in the user guide.
ROADS = {
    "a code is given": [REQUESTING, READY],
    "nobody has decided": [(let(POLL), "Waiting for approval. Code {code} is good for another ….")],
    "it is approved": [
        (let(POLL), "This desktop is now linked to Robin Vale."),
        (let(SESSION), "Tarnwick desktop session ready."),
        (let(PROJECTS), "Loaded 2 Tarnwick project(s)."),
    ],
    "it is denied": [(let(POLL), "Link code {code} was denied on the pairing page.")],
    "it runs out": [(let(POLL), "Link code {code} has expired. Generate a new one.")],
    "no code is given": [
        REQUESTING,
        (let(START), "The device_id must be one line of 200 characters at most."),
        REQUESTING,
        (hang_up(START), "Unknown error"),
    ],
    "a service of few words": [
        REQUESTING,
        READY,
        (answer(POLL, 202), "Waiting for approval at {host}/link/pc."),
        (answer(POLL, 200, access_token="of no use"), "Tarnwick desktop client linked."),
        (let(SESSION), "The access token is not valid. Link this desktop again."),
    ],
    "a start": [(let(SESSION), "Tarnwick desktop session ready."), (let(PROJECTS), "Loaded 2 Tarnwick project(s).")],
    "a start after the link was revoked": [(let(SESSION), "The link of this desktop was revoked. Link it again.")],
    "the list is fetched again": [
        REFRESHING,
        (let(PROJECTS), "Loaded 2 Tarnwick project(s)."),
        REFRESHING,
        (answer(PROJECTS, 500), "Tarnwick returned HTTP 500."),
    ],
    "the list is refused": [REFRESHING, (let(PROJECTS), "The link of this desktop was revoked. Link it again.")],
    "the service has gone away": [REFRESHING, (go_away, "Connection refused")],
    "a GDPS is created": [
        (create(""), "Enter a GDPS name first."),
        (create("Sunset Arcade", accent="orange"), CREATING[1]),
        (let(CREATE), "The accent must be a colour such as #ff8f1f."),
        CREATING,
        (let(CREATE), "Sunset Arcade is online."),
        (let(PROJECTS), "Loaded 3 Tarnwick project(s)."),
        CREATING,
        (answer(CREATE, 201), "Tarnwick created your GDPS from the desktop client."),
        (let(PROJECTS), "Loaded 3 Tarnwick project(s)."),
    ],
    NOTHING_ELSE: [REQUESTING],
    "the desktop is unlinked": [(press("Unlink"), "Tarnwick desktop client unlinked.")],
}

# These are no changes: they are set before the window is shown, and are read with it.
FIRST, FIRST_WHEN_LINKED = "Ready to link your Tarnwick account.", "Checking linked Tarnwick session..."
# The text for a press of a button that is then disabled.
NEVER = "Link the desktop client first."
# The in-process tests of certificates check this one; the service here has no certificate.
INSECURE = "SSL handshake failed: The certificate is self-signed, and untrusted"


class StatusAnnouncements(Scenario):
    """Replies wait at a gate, so that no status text is replaced before it was announced."""

    def setUp(self):
        super().setUp()
        self.code = None
        self.gate = Gate(self.service.address)
        self.addCleanup(self.gate.close)

    def test_a_code_that_is_approved(self):
        self.start_unlinked_at_gate()
        self.hear("a code is given", "nobody has decided", decide("approve"), "it is approved", NOTHING_ELSE)

    def test_a_code_that_is_denied(self):
        self.start_unlinked_at_gate()
        self.hear("a code is given", decide("deny"), "it is denied", NOTHING_ELSE)

    def test_a_code_that_runs_out(self):
        self.start_unlinked_at_gate()
        self.hear("a code is given", lambda test: test.service.let_time_pass(minutes=10), "it runs out", NOTHING_ELSE)

    def test_asking_for_a_code_in_vain(self):
        self.start_unlinked_at_gate(device=201 * "x")
        self.hear("no code is given", NOTHING_ELSE)

    def test_a_service_of_few_words(self):
        self.start_unlinked_at_gate()
        self.hear("a service of few words", NOTHING_ELSE)

    def test_a_start_after_the_link_was_revoked(self):
        self.start_linked_at_gate()
        revoke(self)
        self.hear("a start after the link was revoked", NOTHING_ELSE)

    def test_refreshing_and_unlinking(self):
        self.start_linked_at_gate()
        self.hear("a start", "the list is fetched again", revoke, "the list is refused")
        self.hear("the service has gone away", "the desktop is unlinked")

    def test_creating(self):
        self.start_linked_at_gate()
        self.hear("a start")
        self.window.open_tab("Create GDPS")
        self.hear("a GDPS is created", NOTHING_ELSE)

    def test_every_sentence_of_the_user_guide_is_among_them(self):
        sentences = [sentence for road in ROADS.values() for _cause, sentence in road]
        lines = sentences_of_the_guide()
        self.assertIn(FIRST, lines)
        for line in lines:
            sentence = re.compile(pattern(line))
            self.assertTrue(any(map(sentence.fullmatch, (*sentences, FIRST, FIRST_WHEN_LINKED, NEVER, INSECURE))), line)

    def start_unlinked_at_gate(self, device=DEVICE):
        self.start(FIRST, device_id=device)

    def start_linked_at_gate(self):
        token = PageVisitor().link(self.service.address, DEVICE)
        self.start(FIRST_WHEN_LINKED, device_id=DEVICE, access_token=token)

    def start(self, first, **state):
        self.client.write_state(origin=self.gate.address, **state)
        self.window = self.client.start()
        self.announcements = Announcements(self.window.status_label)
        self.assertEqual(self.window.status(), first)
        self.code_field = self.window.field("Link code")
        self.host = re.search("approve it at (.*)/link/pc", "\n".join(self.window.texts()))[1]

    def hear(self, *roads):
        """Runs the sequences, and expects each of their texts to be announced, and no other one in between."""
        for road in roads:
            if callable(road):
                road(self)
                continue
            for cause, sentence in ROADS[road]:
                cause(self)
                announcement = self.announcements.next()
                self.code = self.code_field.text() or self.code
                self.assertRegex(announcement, f"^{pattern(sentence, code=self.code, host=self.host)}$")


class Announcements:
    """Collects the announcements of a label's changes. The event says only that the text is new, and the text is then
    requested; so after two changes in a row, both announcements may have the later text.
    """

    def __init__(self, label):
        self._path = label.accessible.path
        self._heard = []
        self._listener = Atspi.EventListener.new(self._take_note)
        self._listener.register("object:property-change:accessible-name")
        # When the program has replied once more, it knows about the listener.
        label.states()

    def next(self):
        """Waits for the next change, and returns the announced text."""
        wait_until(lambda: self._heard, "an announcement")
        return self._heard.pop(0)

    def _take_note(self, event):
        if unless_gone(lambda: event.source.path) == self._path:
            self._heard.append(unless_gone(lambda: Control(event.source).name, "a label that is gone"))


def sentences_of_the_guide():
    """The texts in the user guide's table, except those of the network and of the service."""
    with open(os.path.join(REPOSITORY, "docs", "user-guide.md"), encoding="utf-8") as source:
        section = source.read().split("\n## What the status line says\n")[1].split("\n## ")[0]
    lines = re.findall(r"^\| (.*?)(?: \(or .*\))? \|", section, re.MULTILINE)
    return [line for line in lines if re.fullmatch("[^,]+[.…]", line)]


def pattern(sentence, **values):
    """A regular expression for the sentence, with the values filled in."""
    for name, value in values.items():
        sentence = sentence.replace(f"{{{name}}}", str(value))
    return ".+".join(re.escape(part) for part in sentence.split("…"))


if __name__ == "__main__":
    unittest.main()
