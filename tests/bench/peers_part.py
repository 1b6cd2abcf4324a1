"""What people would use instead: the account page in a browser, and two well-known programs of the same kind."""

import contextlib
import pathlib
import shutil
import time

import processes
import psutil
from harness.client_process import write_state
from harness.page_visitor import PageVisitor
from harness.service_process import ServiceProcess
from harness.virtual_desktop import VirtualScreen
from harness.web_browser import SWITCHES
from program_run import ProgramRun
from report import Table, ratio, spread

CLIENT = "client, linked"
_SETTLED_SHARE = 0.02
_SETTLING_LIMIT = 20

# In a network namespace without access to any network.
_ALONE = ["unshare", "--map-root-user", "--net"]


def measure(bench):
    repeats = max(3, bench.rounds // 4)
    with VirtualScreen() as screen:
        service = ServiceProcess(screen.folder, screen.path("service.log"))
        token = PageVisitor().link(service.address, "bench-desktop")
        home = pathlib.Path(screen.path("home"))
        write_state(home, origin=service.address, device_id="bench-desktop", access_token=token)
        settings = home / ".config" / "qBittorrent" / "qBittorrent.conf"
        settings.parent.mkdir(parents=True)
        settings.write_text("[LegalNotice]\nAccepted=true\n", encoding="utf-8")
        window = [f"--user-data-dir={home / 'browser'}", f"--app={service.address}/", "--window-size=1220,860"]
        commands = {
            CLIENT: [bench.client],
            "Chromium, account page": ["chromium", *SWITCHES, *window, "--window-position=0,0"],
            "KeePassXC": [*_ALONE, "keepassxc"],
            "qBittorrent": [*_ALONE, "qbittorrent"],
        }
        for name, words in list(commands.items()):
            program = words[len(_ALONE)] if words[0] == "unshare" else words[0]
            if shutil.which(program) is None:
                print(f"Skipped: {program} is not installed; ./bench --peers installs it.")
                del commands[name]
        measured = {name: [] for name in commands}
        for round_number in range(repeats + 1):
            for name, words in commands.items():
                result = _start(screen, words, home)
                if round_number > 0:
                    measured[name].append(result)
            bench.progress("peers", round_number, repeats)
        service.stop()
    return [_table(measured, repeats)]


def _start(screen, words, home):
    try:
        with ProgramRun(screen, words, home) as run:
            members = _settled_family(run.pid)
            memory = 0.0
            for member in members:
                with contextlib.suppress(psutil.NoSuchProcess):
                    memory += processes.proportional_mib(member.pid)
            return {"frame": run.first_frame_ms, "memory": memory, "processes": len(members)}
    finally:
        # The browser's crash handler detaches itself from the browser.
        for process in psutil.process_iter():
            with contextlib.suppress(psutil.NoSuchProcess):
                if any(str(home) in word for word in process.cmdline()):
                    process.kill()


def _settled_family(pid):
    """The processes, once all of them together are nearly idle; after a limit, even if they never are."""
    end = time.monotonic() + _SETTLING_LIMIT
    used, since = None, time.monotonic()
    while True:
        family = [psutil.Process(pid), *psutil.Process(pid).children(recursive=True)]
        now = 0.0
        for member in family:
            with contextlib.suppress(ProcessLookupError):
                now += processes.processor_ms(member.pid) / 1e3
        settled = used is not None and now - used < _SETTLED_SHARE * (time.monotonic() - since)
        if settled or time.monotonic() > end:
            return family
        used, since = now, time.monotonic()
        time.sleep(1.0)  # processor load can only be measured over some time


def _table(measured, repeats):
    head = ["", "window visible, ms", "× client", "processes", "proportional memory, MiB", "× client"]
    table = Table("Against what people would use instead", head)
    for name, results in measured.items():
        frame, memory = ([result[key] for result in results] for key in ("frame", "memory"))
        table.rows.append(
            [
                name,
                spread(frame, 0),
                ratio(frame, [result["frame"] for result in measured[CLIENT]], 1),
                f"{sorted(result['processes'] for result in results)[len(results) // 2]}",
                spread(memory, 0),
                ratio(memory, [result["memory"] for result in measured[CLIENT]], 1),
            ]
        )
    table.remark = (
        f"Medians of {repeats} starts each, in turns, with a profile that has been started once before. The browser "
        "and the client show the same account; the browser's window may be visible before its page. The other two "
        "start without a network; the program that removes it counts as theirs."
    )
    return table
