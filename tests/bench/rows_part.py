"""From a reply to a filled table: processor time per project, peak memory, and how long the window does not respond."""

from statistics import median

import processes
from canned_service import CannedService, project_list
from curve import draw
from harness.client_process import write_state
from harness.virtual_desktop import VirtualScreen
from program_run import ProgramRun
from report import Table, ratio, spread

SIZES = (10, 1_000, 10_000, 100_000, 200_000)
CLIENT, BARE = "client", "bare table"
# How long an idle window is pinged, in seconds, to measure the effect of the pings themselves.
_RESTING = 2.0
# For fewer projects, the memory of the rows is not measurable beside the window's own.
_FEWEST_TO_WEIGH = 10_000


def measure(bench):
    repeats = max(3, bench.rounds // 2)
    with VirtualScreen() as screen, CannedService() as service:
        write_state(screen.path("home"), origin=service.address, device_id="bench-desktop", access_token="token")
        commands = {
            BARE: [bench.programs / "bare_table", service.address + "/api/pc/instances"],
            CLIENT: [bench.client],
        }
        measured = {}
        for number, size in enumerate(SIZES):
            body = project_list(size)
            measured[size] = {name: [] for name in commands}
            for _ in range(repeats):
                for name, words in commands.items():
                    result = _fill(screen, service, words, body)
                    # A separate fill, since pinging takes processor time, too.
                    result["unanswered"] = _longest_without_answer(screen, service, words, body, quiet=0.5, share=0.3)
                    measured[size][name].append(result)
            bench.progress("rows", number + 1, len(SIZES))
        resting = _longest_without_answer(screen, service, commands[CLIENT], project_list(0), _RESTING, 1.0)
    _draw(measured, bench.folder / "scaling.svg")
    return [_work_table(measured, repeats), _answer_table(measured, resting)]


def _fill(screen, service, words, body):
    service.hold(body)
    with ProgramRun(screen, words, screen.path("home")) as run:
        service.wait_until_asked()
        processes.wait_until_idle(run.pid)
        before, resident = processes.processor_ms(run.pid), processes.resident_mib(run.pid)
        processes.reset_peak(run.pid)
        service.send()
        processes.wait_until_idle(run.pid, quiet=0.5)
        return {
            "processor": processes.processor_ms(run.pid) - before,
            "peak": processes.peak_mib(run.pid) - resident,
        }


def _longest_without_answer(screen, service, words, body, quiet, share):
    service.hold(body)
    with ProgramRun(screen, words, screen.path("home")) as run:
        service.wait_until_asked()
        processes.wait_until_idle(run.pid)
        answers = run.ask_for_answers()
        service.send()
        processes.wait_until_idle(run.pid, quiet=quiet, share=share)
        return answers.longest_ms()


def _work_table(measured, repeats):
    kinds = ("client, {}", "bare table, {}", "ratio")
    head = ["projects", *(kind.format("µs each") for kind in kinds), *(kind.format("peak MiB more") for kind in kinds)]
    table = Table("Reply to filled table", head)
    for size, results in measured.items():
        work = {name: [result["processor"] * 1e3 / size for result in runs] for name, runs in results.items()}
        peak = {name: [result["peak"] for result in runs] for name, runs in results.items()}
        table.rows.append(
            [
                f"{size:,}",
                spread(work[CLIENT], 2),
                spread(work[BARE], 2),
                ratio(work[CLIENT], work[BARE]),
                spread(peak[CLIENT]),
                spread(peak[BARE]),
                ratio(peak[CLIENT], peak[BARE]) if size >= _FEWEST_TO_WEIGH else "–",
            ]
        )
    table.remark = (
        f"Medians of {repeats} fills each, in turns. Processor time of the whole process from the reply's first byte "
        "until it is idle again; peak memory is the increase. The bare table has no style sheet and gets its rows at "
        "once."
    )
    return table


def _answer_table(measured, resting):
    table = Table("Longest time without an answer", ["projects", "client, ms", "bare table, ms"])
    for size, results in measured.items():
        waits = (spread([run["unanswered"] for run in results[name]]) for name in (CLIENT, BARE))
        table.rows.append([f"{size:,}", *waits])
    table.remark = (
        "Pinged once a millisecond through the X server. For an idle client, the longest time is " f"{resting:.1f} ms."
    )
    return table


def _draw(measured, file):
    def lines(key, scale):
        return {
            name: [
                (size, median(run[key] for run in results[name]) * scale(size)) for size, results in measured.items()
            ]
            for name in (CLIENT, BARE)
        }

    charts = {
        "Processor time per project, µs": lines("processor", lambda size: 1e3 / size),
        "Longest time without an answer, ms": lines("unanswered", lambda _size: 1),
    }
    draw(file, charts)
