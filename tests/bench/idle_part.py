"""A window that nobody uses for a minute: how often it wakes up, and how much processor time it takes."""

import contextlib
import time

import processes
from harness.client_process import write_state
from harness.page_visitor import PageVisitor
from harness.service_process import ServiceProcess
from harness.virtual_desktop import VirtualScreen
from program_run import ProgramRun
from report import Table

MINUTE = 60.0
# For half a minute after the start, the toolkit keeps a helper thread and a cache of pictures.
_SETTLING = 35.0


def measure(bench):
    """Measures all of them at the same time, each on its own screen: idle windows do not influence each other."""
    with contextlib.ExitStack() as stack:

        def watched(program, focus=False, **state):
            screen = stack.enter_context(VirtualScreen())
            write_state(screen.path("home"), **state)
            return stack.enter_context(ProgramRun(screen, [program], screen.path("home"), focus)).pid

        service_screen = stack.enter_context(VirtualScreen())
        service = ServiceProcess(service_screen.folder, service_screen.path("service.log"))
        unlinked = {"origin": service.address, "device_id": "bench-desktop"}
        linked = unlinked | {"access_token": PageVisitor().link(service.address, "bench-desktop")}
        runs = {
            "client, unlinked": watched(bench.client, **unlinked),
            "client, linked": watched(bench.client, **linked),
            "client, linked, with the keyboard": watched(bench.client, focus=True, **linked),
            "same widgets, no logic, with the keyboard": watched(bench.programs / "attainable_window", focus=True),
        }
        for pid in runs.values():
            processes.wait_until_idle(pid, quiet=1.0)
        time.sleep(_SETTLING)
        before = {name: _count(pid) for name, pid in runs.items()}
        time.sleep(MINUTE)  # the measured minute
        table = Table("Idle for a minute", ["", "wake-ups", "processor time, ms"])
        for name, pid in runs.items():
            (threads_then, used_then), (threads_now, used_now) = before[name], _count(pid)
            wake_ups = processes.wake_ups_between(threads_then, threads_now)
            table.rows.append([name, str(wake_ups), f"{used_now - used_then:.2f}"])
    table.remark = (
        f"Counted from {_SETTLING:.0f} s after the start, when the toolkit has ended its helper thread. A window with "
        "the keyboard focus has a text cursor in its first field, which the toolkit blinks."
    )
    return [table]


def _count(pid):
    return processes.wake_ups(pid), processes.processor_ms(pid)
