"""Each new text in the status card is announced: whoever does not see the card hears of it."""

import os
import re
import unittest

from harness.announcements import Announcements
from harness.client_process import REPOSITORY
from harness.gate import Gate
from harness.page_visitor import PageVisitor
from harness.scenario import DEVICE, Scenario

START, POLL = "/api/pc/link/start", "/api/pc/link/poll"
SESSION, PROJECTS, CREATE = "/api/pc/me", "/api/pc/instances", "/api/pc/instances/create"


# What makes the window say something.

def press(button):
    return lambda test: test.window.press(button)


def create(name, accent="#ff8f1f"):
    """The form is filled in and sent."""
    return lambda test: test.fill_in_and_create(name, accent)


def let(path):
    """The service answers."""
    return lambda test: test.gate.let_through(path)


def answer(path, status, **values):
    """A service answers otherwise than the local one does by itself."""
    return lambda test: test.gate.answer(path, status, values)


def hang_up(path):
    """The connection ends before there is an answer."""
    return lambda test: test.gate.hang_up(path)


def go_away(test):
    """The service can no longer be reached."""
    test.gate.close()


REQUESTING = press("Generate Link Code"), "Requesting a new Tarnwick PC link code..."
READY = let(START), "Code {code} is ready. Approve it at {host}/link/pc before it expires."
REFRESHING = press("Refresh"), "Refreshing your Tarnwick projects..."
CREATING = create("Sunset Arcade"), "Creating your GDPS from the Tarnwick desktop client..."

# Every sentence of the status card, each after what brings it about, in the order in which a person meets them. {code}
# is the link code, {host} the service's public name, and … stands for anything, as it does in the user guide.
ROADS = {
    "a code is given": [REQUESTING, READY],
    "nobody has decided": [
        (let(POLL), "Waiting for approval. Code {code} is good for another …."),
    ],
    "it is approved": [
        (let(POLL), "This desktop is now linked to Robin Vale."),
        (let(SESSION), "Tarnwick desktop session ready."),
        (let(PROJECTS), "Loaded 2 Tarnwick project(s)."),
    ],
    "it is denied": [
        (let(POLL), "Link code {code} was denied on the pairing page."),
    ],
    "it runs out": [
        (let(POLL), "Link code {code} has expired. Generate a new one."),
    ],
    "no code is given": [
        REQUESTING, (let(START), "The device_id must be one line of 200 characters at most."),
        REQUESTING, (answer(START, 503, error="No codes today."), "No codes today."),
        REQUESTING, (answer(START, 500), "Tarnwick returned HTTP 500."),
        REQUESTING, (hang_up(START), "Unknown error"),
    ],
    "a service of few words": [
        REQUESTING, READY,
        (answer(POLL, 202), "Waiting for approval at {host}/link/pc."),
        (answer(POLL, 429), "Tarnwick returned HTTP 429."),
        REQUESTING, READY,
        (answer(POLL, 200, access_token="of no use"), "Tarnwick desktop client linked."),
        (let(SESSION), "The access token is not valid. Link this desktop again."),
    ],
    "a start": [
        (let(SESSION), "Tarnwick desktop session ready."),
        (let(PROJECTS), "Loaded 2 Tarnwick project(s)."),
    ],
    "a start after the link was revoked": [
        (let(SESSION), "The link of this desktop was revoked. Link it again."),
    ],
    "a start while the service is at fault": [
        (answer(SESSION, 503), "Tarnwick returned HTTP 503."),
    ],
    "a start while the service is away": [
        (go_away, "Connection refused"),
    ],
    "the list is fetched again": [
        REFRESHING, (let(PROJECTS), "Loaded 2 Tarnwick project(s)."),
        REFRESHING, (answer(PROJECTS, 500), "Tarnwick returned HTTP 500."),
        REFRESHING, (answer(PROJECTS, 200), "Loaded 0 Tarnwick project(s)."),
    ],
    "the list is refused": [
        REFRESHING, (let(PROJECTS), "The link of this desktop was revoked. Link it again."),
    ],
    "the service has gone away": [
        REFRESHING, (go_away, "Connection refused"),
    ],
    "a GDPS is created": [
        (create(""), "Enter a GDPS name first."),
        (create("Sunset Arcade", accent="orange"), CREATING[1]),
        (let(CREATE), "The accent must be a colour such as #ff8f1f."),
        CREATING, (answer(CREATE, 500), "Tarnwick returned HTTP 500."),
        CREATING, (hang_up(CREATE), "Unknown error"),
        CREATING, (let(CREATE), "Sunset Arcade is online."),
        (let(PROJECTS), "Loaded 3 Tarnwick project(s)."),
        CREATING, (answer(CREATE, 201), "Tarnwick created your GDPS from the desktop client."),
        (let(PROJECTS), "Loaded 3 Tarnwick project(s)."),
    ],
    "the desktop is unlinked": [
        (press("Unlink"), "Tarnwick desktop client unlinked."),
    ],
}

# These are no changes: they are older than the window, and are read with it.
FIRST, FIRST_WHEN_LINKED = "Ready to link your Tarnwick account.", "Checking linked Tarnwick session..."
# And this one would be the answer to a button that cannot be pressed then.
NEVER = "Link the desktop client first."


class StatusAnnouncements(Scenario):
    """Replies wait at a gate, so that no status text is replaced before it was heard."""

    def setUp(self):
        super().setUp()
        self.code = self.host = None
        self.open_gate()

    def test_a_code_that_is_approved(self):
        self.start_unlinked_at_gate()
        self.hear("a code is given", "nobody has decided")
        self.decide("approve")
        self.hear("it is approved")
        self.hear_nothing_else()

    def test_a_code_that_is_denied(self):
        self.start_unlinked_at_gate()
        self.hear("a code is given")
        self.decide("deny")
        self.hear("it is denied")
        self.hear_nothing_else()

    def test_a_code_that_runs_out(self):
        self.start_unlinked_at_gate()
        self.hear("a code is given")
        self.service.let_time_pass(minutes=10)
        self.hear("it runs out")
        self.hear_nothing_else()

    def test_asking_for_a_code_in_vain(self):
        self.start_unlinked_at_gate(device=201 * "x")
        self.hear("no code is given")
        self.hear_nothing_else()

    def test_a_service_of_few_words(self):
        self.start_unlinked_at_gate()
        self.hear("a service of few words")
        self.hear_nothing_else()

    def test_a_start(self):
        self.start_linked_at_gate()
        self.hear("a start")
        self.hear_nothing_else()

    def test_a_start_after_the_link_was_revoked(self):
        self.start_linked_at_gate(revoked=True)
        self.hear("a start after the link was revoked")
        self.hear_nothing_else()

    def test_a_start_while_the_service_is_at_fault(self):
        self.start_linked_at_gate()
        self.hear("a start while the service is at fault")
        self.hear_nothing_else()

    def test_a_start_while_the_service_is_away(self):
        self.start_linked_at_gate()
        self.hear("a start while the service is away")
        self.open_gate()
        self.window.field("Tarnwick URL").set_text(self.gate.address)
        self.hear_nothing_else()

    def test_refreshing_and_unlinking(self):
        self.start_linked_at_gate()
        self.hear("a start", "the list is fetched again")
        self.revoke()
        self.hear("the list is refused", "the service has gone away", "the desktop is unlinked")

    def test_creating(self):
        self.start_linked_at_gate()
        self.hear("a start")
        self.window.open_tab("Create GDPS")
        self.hear("a GDPS is created")
        self.hear_nothing_else()

    def test_creating_while_unlinked(self):
        self.start_unlinked_at_gate()
        self.window.open_tab("Create GDPS")
        self.assertEqual(self.window.button("Create GDPS").actions(), [])

    def test_every_sentence_of_the_user_guide_is_among_them(self):
        sentences = [sentence for road in ROADS.values() for _cause, sentence in road]
        lines = sentences_of_the_guide()
        self.assertIn(FIRST, lines)
        for line in lines:
            self.assertTrue(any(re.fullmatch(pattern(line), sentence)
                                for sentence in (*sentences, FIRST, FIRST_WHEN_LINKED, NEVER)), line)

    def open_gate(self):
        self.gate = Gate(self.service.address)
        self.addCleanup(self.gate.close)

    def start_unlinked_at_gate(self, device=DEVICE):
        self.start(FIRST, device_id=device)

    def start_linked_at_gate(self, revoked=False):
        token = PageVisitor().link(self.service.address, DEVICE)
        if revoked:
            self.revoke()
        self.start(FIRST_WHEN_LINKED, device_id=DEVICE, access_token=token)

    def start(self, first, **state):
        self.client.write_state(origin=self.gate.address, **state)
        self.window = self.client.start()
        self.announcements = Announcements(self.window.status_label())
        self.assertEqual(self.window.status(), first)
        self.code_field = self.window.field("Link code")
        self.host = re.search("approve it at (.*)/link/pc", "\n".join(self.window.texts()))[1]

    def revoke(self):
        """A desktop that is linked anew has its earlier link revoked."""
        PageVisitor().link(self.service.address, DEVICE)

    def decide(self, decision):
        PageVisitor().decide(f"{self.service.address}/link/pc?code={self.code}", decision)

    def fill_in_and_create(self, name, accent):
        self.window.field("GDPS Name").set_text(name)
        self.window.field("Accent").set_text(accent)
        self.window.press("Create GDPS")

    def hear(self, *roads):
        """Takes the roads, and expects each of their sentences to be announced, and no other one in between."""
        for cause, sentence in [step for road in roads for step in ROADS[road]]:
            self.hear_one(cause, sentence)

    def hear_nothing_else(self):
        """What is heard next is what is brought about next."""
        self.hear_one(*REQUESTING)

    def hear_one(self, cause, sentence):
        cause(self)
        announcement = self.announcements.next()
        self.code = self.code_field.text() or self.code
        self.assertRegex(announcement, f"^{pattern(sentence, code=self.code, host=self.host)}$")


def sentences_of_the_guide():
    """What the user guide's table explains, but for the network's and the service's own words."""
    with open(os.path.join(REPOSITORY, "docs", "user-guide.md"), encoding="utf-8") as source:
        section = source.read().split("\n## What the status line says\n")[1].split("\n## ")[0]
    lines = re.findall(r"^\| (.*?)(?: \(or .*\))? \|", section, re.MULTILINE)
    return [line for line in lines if re.fullmatch("[^,]+[.…]", line)]


def pattern(sentence, **values):
    """A regular expression for the sentence, with what stands for something else filled in."""
    for name, value in values.items():
        sentence = sentence.replace(f"{{{name}}}", str(value))
    return ".+".join(re.escape(part) for part in sentence.split("…"))


if __name__ == "__main__":
    unittest.main()
