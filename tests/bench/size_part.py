"""Size on disk, and the shared libraries that are loaded."""

import os
import subprocess

import processes
from client_home import write_home
from program_run import ProgramRun
from quiet_screen import QuietScreen
from report import Table


def measure(bench):
    programs = {"client": bench.client, "same widgets and sheet, no logic": bench.programs / "attainable_window",
                "empty window": bench.programs / "empty_window"}
    table = Table("Size", ["", "stripped, KiB", "libraries loaded", "of them unused"])
    with QuietScreen() as screen:
        for name, program in programs.items():
            size = _stripped_kib(program, screen.path("stripped"))
            libraries = _loaded(bench, screen, program)
            unused = _unused(program)
            table.rows.append([name, f"{size:.0f}", str(len(libraries)), ", ".join(unused) or "none"])
            table.figures[name] = {"stripped_kib": size, "libraries": libraries, "unused": unused}
    table.remarks.append("Libraries and plugins in the memory of the idle window. Unused: named by the program itself "
                         "and needed by nothing in it.")
    return table


def _stripped_kib(program, copy):
    subprocess.run(["strip", "-o", copy, str(program)], check=True)
    return os.path.getsize(copy) / 1024


def _loaded(bench, screen, program):
    home = write_home(screen.path("home"), "http://127.0.0.1:9")
    with ProgramRun(bench.programs, screen, [program], home) as run:
        run.wait_until_idle()
        return processes.loaded_libraries(run.pid)


def _unused(program):
    # Its exit code says whether there are any.
    listed = subprocess.run(["ldd", "-u", str(program)], check=False, capture_output=True, text=True).stdout
    return [os.path.basename(line.strip()) for line in listed.splitlines() if line.strip().startswith("/")]
