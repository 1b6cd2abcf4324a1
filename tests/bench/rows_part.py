"""From a reply to a filled table: processor time per project, peak memory, and how long the window does not answer."""

import processes
from canned_service import CannedService, project_list
from client_home import write_home
from curve import Chart, Line, draw
from figures import ratio, spread
from program_run import ProgramRun
from quiet_screen import QuietScreen
from report import Table

SIZES = (10, 1_000, 10_000, 100_000, 200_000)
CLIENT, BARE = "client", "bare table"
# How long a window with nothing to do is asked, to know what the asking itself shows, in seconds.
_RESTING = 2.0
# Fewer projects than that take no memory that stands out from the window's own.
_FEWEST_TO_WEIGH = 10_000


def measure(bench):
    with QuietScreen() as screen, CannedService() as service:
        programs = {BARE: lambda: _start_bare(bench, screen, service),
                    CLIENT: lambda: _start_client(bench, screen, service)}
        measured = {}
        for size in SIZES:
            body = project_list(size)
            measured[size] = _measure_size(service, programs, body, _repeats(bench))
            bench.progress("rows", SIZES.index(size) + 1, len(SIZES))
        resting = _rest(service, programs[CLIENT])
    tables = [_work_table(measured, _repeats(bench)), _answer_table(measured, resting)]
    draw(bench.folder / "scaling.svg", _charts(measured))
    return tables


def _repeats(bench):
    return max(3, bench.rounds // 2)


def _start_client(bench, screen, service):
    return ProgramRun(bench.programs, screen, [bench.client], write_home(screen.path("home"), service.address, "token"))


def _start_bare(bench, screen, service):
    return ProgramRun(bench.programs, screen,
                      [bench.programs / "bare_table", service.address + "/api/pc/instances"])


def _measure_size(service, programs, body, repeats):
    results = {name: [] for name in programs}
    for _ in range(repeats):
        for name, start in programs.items():
            result = _fill(service, start, body)
            result["unanswered"] = _fill_and_ask(service, start, body)
            results[name].append(result)
    return results


def _fill(service, start, body):
    service.hold(body)
    with start() as run:
        service.wait_until_asked()
        run.wait_until_idle()
        before, resident = run.processor_ms(), processes.resident_mib(run.pid)
        processes.reset_peak(run.pid)
        service.send()
        run.wait_until_idle(quiet=0.5)
        return {"processor": run.processor_ms() - before, "peak": processes.peak_mib(run.pid) - resident,
                "kept": processes.resident_mib(run.pid) - resident}


def _fill_and_ask(service, start, body):
    """Another fill, since asking takes processor time too."""
    service.hold(body)
    with start() as run:
        service.wait_until_asked()
        run.wait_until_idle()
        answers = run.ask_for_answers()
        service.send()
        run.wait_until_idle(quiet=0.5, share=0.3)
        return answers.longest_ms()


def _rest(service, start):
    service.hold(project_list(0))
    with start() as run:
        service.wait_until_asked()
        service.send()
        run.wait_until_idle()
        answers = run.ask_for_answers()
        run.wait_until_idle(quiet=_RESTING, share=1.0)
        return answers.longest_ms()


def _work_table(measured, repeats):
    table = Table("Reply to filled table", ["projects", "client, µs each", "bare table, µs each", "ratio",
                                            "client, peak MiB more", "bare table, peak MiB more", "ratio"])
    for size, results in measured.items():
        work = {name: [result["processor"] * 1e3 / size for result in runs] for name, runs in results.items()}
        peak = {name: [result["peak"] for result in runs] for name, runs in results.items()}
        table.rows.append([
            f"{size:,}", spread(work[CLIENT]).text(2), spread(work[BARE]).text(2),
            ratio(work[CLIENT], work[BARE]).text(2), spread(peak[CLIENT]).text(), spread(peak[BARE]).text(),
            ratio(peak[CLIENT], peak[BARE]).text(2) if size >= _FEWEST_TO_WEIGH else "–"])
    table.remarks.append(f"Medians of {repeats} fills each, in turns. Processor time of the whole process from the "
                         "reply's first byte until it is idle again; peak memory is what it takes more than before. "
                         "The bare table has no style sheet, and is told its number of rows at once.")
    table.figures = {str(size): results for size, results in measured.items()}
    return table


def _answer_table(measured, resting):
    table = Table("Longest time without an answer", ["projects", "client, ms", "bare table, ms"])
    for size, results in measured.items():
        table.rows.append([f"{size:,}", *(spread([run["unanswered"] for run in results[name]]).text()
                                          for name in (CLIENT, BARE))])
    table.remarks.append(f"Asked once a millisecond through the X server. With nothing to do, the client's longest is "
                         f"{resting:.1f} ms.")
    table.figures = {"resting": resting}
    return table


def _charts(measured):
    def line(name, key, scale):
        return Line(name, [(size, spread([run[key] * scale(size) for run in results[name]]).median)
                           for size, results in measured.items()])
    each = [line(name, "processor", lambda size: 1e3 / size) for name in (CLIENT, BARE)]
    waits = [line(name, "unanswered", lambda _size: 1) for name in (CLIENT, BARE)]
    return [Chart("Processor time per project, µs", each), Chart("Longest time without an answer, ms", waits)]
