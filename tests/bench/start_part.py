"""From the start to the first painted frame, processor time and private memory: the client against the limits."""

import socket

import processes
from harness.client_process import write_state
from harness.page_visitor import PageVisitor
from harness.service_process import ServiceProcess
from harness.virtual_desktop import VirtualScreen
from program_run import ProgramRun
from report import Table, ratio, spread

EMPTY, ATTAINABLE = "empty window", "same widgets and sheet, no logic"


def measure(bench):
    """Starts each program once per round, one after the other."""
    with VirtualScreen() as screen, socket.socket() as taken:
        taken.bind(("127.0.0.1", 0))  # nobody listens there, and nobody else can
        nobody = f"http://127.0.0.1:{taken.getsockname()[1]}"
        service = ServiceProcess(screen.folder, screen.path("service.log"))
        token = PageVisitor().link(service.address, "bench-desktop")
        with_network = bench.programs / "logo_and_network_window"
        home = screen.path("home")
        starts = {
            EMPTY: [bench.programs / "empty_window"],
            "window with one line of text": [bench.programs / "empty_window", "Tarnwick Desktop Client"],
            "same widgets, no sheet, no logic": [bench.programs / "widgets_window"],
            ATTAINABLE: [bench.programs / "attainable_window"],
            "same with the logo": [bench.programs / "logo_window"],
            "same with logo and network library": [with_network],
            "same with one request, answered": [with_network, service.address],
            "same with one request, refused": [with_network, nobody],
            "client, unlinked": [bench.client],
            "client, linked": [bench.client],
            "client, offline": [bench.client],
        }
        states = {
            "client, unlinked": {"origin": service.address},
            "client, linked": {"origin": service.address, "access_token": token},
            "client, offline": {"origin": nobody, "access_token": token},
        }
        measured = {name: [] for name in starts}
        for round_number in range(bench.rounds + 1):
            for name, words in starts.items():
                write_state(home, device_id="bench-desktop", **states.get(name, {}))
                result = _start(screen, words, home)
                if round_number > 0:  # the first one fills the caches
                    measured[name].append(result)
            bench.progress("start", round_number, bench.rounds)
        service.stop()
    return [_table(measured, bench.rounds)]


def _start(screen, words, home):
    with ProgramRun(screen, words, home) as run:
        processes.wait_until_idle(run.pid)
        return {
            "first frame, ms": run.first_frame_ms,
            "processor until then, ms": run.first_frame_processor_ms,
            "until idle, ms": processes.processor_ms(run.pid),
            "private memory, MiB": processes.private_mib(run.pid),
        }


def _table(measured, rounds):
    table = Table("Start", [""])
    for name, results in measured.items():
        row = [name]
        for measure in results[0]:
            values = [result[measure] for result in results]
            row.append(spread(values))
            if measure != "until idle, ms":
                for limit in (EMPTY, ATTAINABLE):
                    row.append(ratio(values, [result[measure] for result in measured[limit]]))
        table.rows.append(row)
    for measure in measured[EMPTY][0]:
        table.head += [measure] + (["× empty", "× attainable"] if measure != "until idle, ms" else [])
    table.remark = (
        f"Medians of {rounds} starts each, in turns, with quartiles in brackets; ratios are between starts of the same "
        "round. Attainable is the line with widgets and sheet, without logic."
    )
    return table
