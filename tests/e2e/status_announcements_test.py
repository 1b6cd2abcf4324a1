"""Each new text in the status card is announced: whoever does not see the card hears of it."""

import unittest

from harness.announcements import Announcements
from harness.gate import Gate
from harness.page_visitor import PageVisitor
from harness.scenario import DEVICE, Scenario
from harness.waiting import wait_until

START, POLL = "/api/pc/link/start", "/api/pc/link/poll"
SESSION, PROJECTS, CREATE = "/api/pc/me", "/api/pc/instances", "/api/pc/instances/create"


class StatusAnnouncements(Scenario):
    """Replies wait at a gate, so that no status text is replaced before it was heard."""

    def setUp(self):
        super().setUp()
        self.gate = Gate(self.service.address)
        self.addCleanup(self.gate.close)

    def test_from_asking_for_a_code_to_the_list_of_projects(self):
        code = self.ask_for_a_code()
        self.decide(code, "approve")
        self.let_and_expect(POLL, "This desktop is now linked to Robin Vale.")
        self.let_and_expect(SESSION, "Tarnwick desktop session ready.")
        self.let_and_expect(PROJECTS, "Loaded 2 Tarnwick project(s).")
        self.expect_no_more()

    def test_a_code_that_is_denied(self):
        code = self.ask_for_a_code()
        self.decide(code, "deny")
        self.let_and_expect(POLL, f"Link code {code} was denied on the pairing page.")
        self.expect_no_more()

    def test_a_code_that_runs_out(self):
        code = self.ask_for_a_code()
        self.service.let_time_pass(minutes=10)
        self.let_and_expect(POLL, f"Link code {code} has expired. Generate a new one.")
        self.expect_no_more()

    def test_a_start_says_that_the_session_is_checked_as_soon_as_the_window_is_there(self):
        self.start_linked_at_gate()
        # The text is older than the window, so that there is no change to announce: it is read with the window.
        self.assertEqual(self.window.status(), "Checking linked Tarnwick session...")
        self.assertEqual(self.announcements.rest(), [])
        self.let_and_expect(SESSION, "Tarnwick desktop session ready.")
        self.let_and_expect(PROJECTS, "Loaded 2 Tarnwick project(s).")
        self.expect_no_more()

    def test_from_refreshing_to_unlinking(self):
        self.start_linked_and_listed()
        self.press_and_expect("Refresh", "Refreshing your Tarnwick projects...")
        self.let_and_expect(PROJECTS, "Loaded 2 Tarnwick project(s).")
        self.window.open_tab("Create GDPS")
        self.press_and_expect("Create GDPS", "Enter a GDPS name first.")
        self.window.field("GDPS Name").set_text("Sunset Arcade")
        self.press_and_expect("Create GDPS", "Creating your GDPS from the Tarnwick desktop client...")
        self.let_and_expect(CREATE, "Sunset Arcade is online.")
        self.let_and_expect(PROJECTS, "Loaded 3 Tarnwick project(s).")
        self.press_and_expect("Unlink", "Tarnwick desktop client unlinked.")
        self.expect_no_more()

    def test_a_service_that_cannot_be_reached(self):
        self.start_linked_and_listed()
        self.press_and_expect("Refresh", "Refreshing your Tarnwick projects...")
        self.gate.close()
        self.assertEqual(self.announcements.next(), "Connection refused")
        self.expect_no_more()

    def ask_for_a_code(self):
        """Returns the code, whose next poll waits at the gate."""
        self.client.write_state(origin=self.gate.address, device_id=DEVICE)
        self.listen_to(self.client.start())
        self.press_and_expect("Generate Link Code", "Requesting a new Tarnwick PC link code...")
        self.gate.let_through(START)
        announcement = self.announcements.next()
        code = wait_until(lambda: self.window.field("Link code").text(), "a link code")
        self.assertRegex(announcement, f"^Code {code} is ready. Approve it at .* before it expires.$")
        self.gate.let_through(POLL)
        self.assertRegex(self.announcements.next(), f"^Waiting for approval. Code {code} is good for another .*.$")
        return code

    def start_linked_at_gate(self):
        token = PageVisitor().link(self.service.address, DEVICE)
        self.client.write_state(origin=self.gate.address, device_id=DEVICE, access_token=token)
        self.listen_to(self.client.start())

    def start_linked_and_listed(self):
        self.start_linked_at_gate()
        self.let_and_expect(SESSION, "Tarnwick desktop session ready.")
        self.let_and_expect(PROJECTS, "Loaded 2 Tarnwick project(s).")

    def listen_to(self, window):
        self.window = window
        self.announcements = Announcements(window.status_label())

    def decide(self, code, decision):
        PageVisitor().decide(f"{self.service.address}/link/pc?code={code}", decision)

    def press_and_expect(self, button, text):
        self.window.press(button)
        self.assertEqual(self.announcements.next(), text)

    def let_and_expect(self, path, text):
        self.gate.let_through(path)
        self.assertEqual(self.announcements.next(), text)

    def expect_no_more(self):
        self.assertEqual(self.announcements.rest(), [])


if __name__ == "__main__":
    unittest.main()
