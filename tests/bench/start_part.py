"""Start to first painted frame, processor time and private memory: the client against what is possible."""

import socket

import processes
from client_home import DEVICE, write_home
from figures import ratio, spread
from harness.page_visitor import PageVisitor
from harness.service_process import ServiceProcess
from program_run import ProgramRun
from quiet_screen import QuietScreen
from report import Table

EMPTY, LINE, WIDGETS = "empty window", "window with one line of text", "same widgets, no sheet, no logic"
ATTAINABLE = "same widgets and sheet, no logic"
LOGO, NETWORK = "same with the logo", "same with logo and network library"
ANSWERED, REFUSED = "same with one request, answered", "same with one request, refused"
UNLINKED, LINKED, OFFLINE = "client, unlinked", "client, linked", "client, offline"
_MEASURES = {
    "frame": "first frame",
    "frame_processor": "processor time until then",
    "processor": "processor time until idle",
    "memory": "private memory",
}


def measure(bench):
    """One start of each program after the other, again and again."""
    with QuietScreen() as screen, _refused_port() as closed_port:
        service = ServiceProcess(bench.service, screen.folder, screen.path("service.log"))
        token = PageVisitor().link(service.address, DEVICE)
        nobody = f"http://127.0.0.1:{closed_port.getsockname()[1]}"
        starts = {
            EMPTY: lambda: _start(bench, screen, [bench.programs / "empty_window"]),
            LINE: lambda: _start(bench, screen, [bench.programs / "line_window"]),
            WIDGETS: lambda: _start(bench, screen, [bench.programs / "widgets_window"]),
            ATTAINABLE: lambda: _start(bench, screen, [bench.programs / "attainable_window"]),
            LOGO: lambda: _start(bench, screen, [bench.programs / "logo_window"]),
            NETWORK: lambda: _start(bench, screen, [bench.programs / "logo_and_network_window"]),
            ANSWERED: lambda: _start(bench, screen, [bench.programs / "logo_and_network_window", service.address]),
            REFUSED: lambda: _start(bench, screen, [bench.programs / "logo_and_network_window", nobody]),
            UNLINKED: lambda: _start_client(bench, screen, service.address),
            LINKED: lambda: _start_client(bench, screen, service.address, token),
            OFFLINE: lambda: _start_client(bench, screen, nobody, token),
        }
        measured = {name: [] for name in starts}
        for round_number in range(bench.rounds + 1):
            for name, start in starts.items():
                result = start()
                if round_number > 0:  # the first one fills the caches
                    measured[name].append(result)
            bench.progress("start", round_number, bench.rounds)
        service.stop()
    return _table(measured, bench.rounds)


def _start_client(bench, screen, origin, token=None):
    home = write_home(screen.path("home"), origin, token)
    return _start(bench, screen, [bench.client], home)


def _start(bench, screen, words, home=None):
    with ProgramRun(bench.programs, screen, words, home) as run:
        run.wait_until_idle()
        return {"frame": run.first_frame_ms, "frame_processor": run.first_frame_processor_ms,
                "processor": run.processor_ms(), "memory": processes.private_mib(run.pid)}


def _refused_port():
    """An address that refuses every connection, since nobody listens there and nobody else can."""
    taken = socket.socket()
    taken.bind(("127.0.0.1", 0))
    return taken


def _table(measured, rounds):
    table = Table("Start", ["", "first frame, ms", "× empty", "× attainable", "processor until then, ms", "× empty",
                            "× attainable", "until idle, ms", "private memory, MiB", "× empty", "× attainable"])
    for name, results in measured.items():
        values = {measure: [result[measure] for result in results] for measure in _MEASURES}
        ratios = {measure: [_ratio(measured, name, limit, measure) for limit in (EMPTY, ATTAINABLE)]
                  for measure in _MEASURES}
        table.rows.append([
            name, spread(values["frame"]).text(), *ratios["frame"],
            spread(values["frame_processor"]).text(), *ratios["frame_processor"],
            spread(values["processor"]).text(), spread(values["memory"]).text(), *ratios["memory"]])
    table.remarks.append(f"Medians of {rounds} starts each, one after the other in turns, with quartiles in brackets; "
                         "ratios are those of the starts of one round.")
    table.figures = measured
    return table


def _ratio(measured, name, limit, measure):
    return ratio([result[measure] for result in measured[name]],
                 [result[measure] for result in measured[limit]]).text(2)
