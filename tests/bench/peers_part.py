"""What a person would use instead: the account page in a browser, and two well-known programs of the same kind."""

import contextlib
import os
import pathlib
import shutil
import signal
import time

import processes
from client_home import DEVICE, write_home
from figures import ratio, spread
from harness.page_visitor import PageVisitor
from harness.service_process import ServiceProcess
from program_run import ProgramRun
from quiet_screen import QuietScreen
from report import Table

CLIENT = "client, linked"
_SETTLED_SHARE = 0.02
_SETTLING_LIMIT = 20

# Nothing but this machine is looked up or called.
_BROWSER_SWITCHES = [
    "--no-sandbox", "--disable-gpu", "--no-first-run", "--no-proxy-server", "--no-default-browser-check",
    "--disable-background-networking", "--disable-component-update", "--disable-sync", "--disable-default-apps",
    "--disable-extensions", "--disable-dev-shm-usage", "--disable-quic", "--window-size=1220,860",
    "--window-position=0,0", "--host-resolver-rules=MAP * ~NOTFOUND, EXCLUDE 127.0.0.1",
]
# In a network of its own, which has no way out.
_ALONE = ["unshare", "--map-root-user", "--net"]
_TORRENT_SETTINGS = "[LegalNotice]\nAccepted=true\n"


def measure(bench):
    with QuietScreen() as screen:
        service = ServiceProcess(bench.service, screen.folder, screen.path("service.log"))
        token = PageVisitor().link(service.address, DEVICE)
        home = write_home(screen.path("client"), service.address, token)
        starts = {CLIENT: lambda: _start(bench, screen, [bench.client], home)}
        starts |= _installed_peers(bench, screen, service.address)
        measured = {name: [] for name in starts}
        repeats = max(3, bench.rounds // 4)
        for round_number in range(repeats + 1):
            for name, start in starts.items():
                result = start()
                if round_number > 0:
                    measured[name].append(result)
            bench.progress("peers", round_number, repeats)
        service.stop()
    return _table(measured, repeats)


def _installed_peers(bench, screen, address):
    """How each of them is started, with a line for each that is not there."""
    home = pathlib.Path(screen.path("peers"))
    torrent_settings = home / ".config" / "qBittorrent" / "qBittorrent.conf"
    torrent_settings.parent.mkdir(parents=True, exist_ok=True)
    torrent_settings.write_text(_TORRENT_SETTINGS, encoding="utf-8")
    commands = {
        "Chromium, account page": ["chromium", *_BROWSER_SWITCHES, f"--user-data-dir={screen.path('browser')}",
                                   f"--app={address}/"],
        "KeePassXC": [*_ALONE, "keepassxc"],
        "qBittorrent": [*_ALONE, "qbittorrent"],
    }
    starts = {}
    for name, words in commands.items():
        program = next(word for word in words if word in ("chromium", "keepassxc", "qbittorrent"))
        if shutil.which(program) is None:
            print(f"Skipped: {program} is not installed; ./bench --peers installs it.")
        else:
            starts[name] = lambda words=words: _start(bench, screen, words, home)
    return starts


def _start(bench, screen, words, home):
    try:
        return _measure_start(bench, screen, words, home)
    finally:
        # The browser's helper for crashes makes itself independent of the browser.
        for helper in processes.naming(screen.path("browser")) + processes.naming(screen.path("peers")):
            with contextlib.suppress(ProcessLookupError):
                os.kill(helper, signal.SIGKILL)


def _measure_start(bench, screen, words, home):
    with ProgramRun(bench.programs, screen, words, home) as run:
        members = _wait_until_settled(run.pid)
        memory = 0.0
        for member in members:
            try:
                memory += processes.proportional_mib(member)
            except (FileNotFoundError, ProcessLookupError):
                continue
        return {"frame": run.first_frame_ms, "memory": memory, "processes": len(members)}


def _wait_until_settled(pid):
    """The processes, once all of them together do nothing much; or after a while, for those that always do."""
    end = time.monotonic() + _SETTLING_LIMIT
    used, since = None, time.monotonic()
    while True:
        members = processes.family(pid)
        now = sum(_processor_seconds(member) for member in members)
        if used is not None and now - used < _SETTLED_SHARE * (time.monotonic() - since):
            return members
        if time.monotonic() > end:
            return members
        used, since = now, time.monotonic()
        time.sleep(1.0)  # how busy something is can only be seen over a while


def _processor_seconds(pid):
    try:
        return processes.processor_seconds(pid)
    except ProcessLookupError:
        return 0.0


def _table(measured, repeats):
    table = Table("Against what people would use instead",
                  ["", "window visible, ms", "× client", "processes", "proportional memory, MiB", "× client"])
    for name, results in measured.items():
        values = {key: [result[key] for result in results] for key in ("frame", "memory", "processes")}
        ours = {key: [result[key] for result in measured[CLIENT]] for key in ("frame", "memory")}
        table.rows.append([
            name, spread(values["frame"]).text(0), ratio(values["frame"], ours["frame"]).text(1),
            f"{spread(values['processes']).median:.0f}", spread(values["memory"]).text(0),
            ratio(values["memory"], ours["memory"]).text(1)])
    table.remarks.append(f"Medians of {repeats} starts each, in turns, with a profile that has been started once "
                         "before. The browser and the client show the same account; visible is the window, in the "
                         "browser not necessarily with the page in it. The other two start in a network of their own, "
                         "which counts as theirs.")
    table.figures = measured
    return table
