"""A window that nobody touches for a minute: how often it wakes up, and for how long."""

import contextlib
import time

import processes
from client_home import DEVICE, write_home
from harness.page_visitor import PageVisitor
from harness.service_process import ServiceProcess
from program_run import ProgramRun
from quiet_screen import QuietScreen
from report import Table

MINUTE = 60.0
# The toolkit keeps a helper thread and a cache of pictures for half a minute after the start, in case.
_SETTLING = 35.0


def measure(bench):
    """All of them at the same time, each on a screen of its own: none does anything that the others could feel."""
    with contextlib.ExitStack() as stack:
        def watched(words, home=None, focus=False):
            screen = stack.enter_context(QuietScreen())
            folder = None if home is None else write_home(screen.path("home"), *home)
            return stack.enter_context(ProgramRun(bench.programs, screen, words, folder, focus))

        service_screen = stack.enter_context(QuietScreen())
        service = ServiceProcess(bench.service, service_screen.folder, service_screen.path("service.log"))
        stack.callback(service.stop)
        linked = (service.address, PageVisitor().link(service.address, DEVICE))
        attainable = [bench.programs / "attainable_window"]
        runs = {
            "client, unlinked": watched([bench.client], (service.address,)),
            "client, linked": watched([bench.client], linked),
            "client, linked, with the keyboard": watched([bench.client], linked, focus=True),
            "same widgets, no logic, with the keyboard": watched(attainable, focus=True),
        }
        for run in runs.values():
            run.wait_until_idle(quiet=1.0)
        time.sleep(_SETTLING)
        before = {name: _count(run) for name, run in runs.items()}
        time.sleep(MINUTE)  # the time is what is measured
        after = {name: _count(run) for name, run in runs.items()}
    return _table({name: _difference(before[name], after[name]) for name in runs})


def _count(run):
    return processes.wake_ups(run.pid), run.processor_ms()


def _difference(before, after):
    return processes.wake_ups_between(before[0], after[0]), after[1] - before[1]


def _table(counted):
    table = Table("Idle for a minute", ["", "wake-ups", "processor time, ms"])
    table.rows = [[name, str(wake_ups), f"{used:.2f}"] for name, (wake_ups, used) in counted.items()]
    table.remarks.append(f"Counted from {_SETTLING:.0f} s after the start, when the toolkit has put away what it keeps "
                         "for a while. A window with the keyboard shows a text cursor in its first field; its blinking "
                         "is the toolkit's.")
    table.figures = {name: {"wake_ups": wake_ups, "processor_ms": used}
                     for name, (wake_ups, used) in counted.items()}
    return table
