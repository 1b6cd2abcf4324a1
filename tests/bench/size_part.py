"""Size on disk, and the shared libraries that are loaded."""

import os
import subprocess

import processes
import psutil
from harness.client_process import write_state
from harness.virtual_desktop import VirtualScreen
from program_run import ProgramRun
from report import Table


def measure(bench):
    programs = {
        "client": bench.client,
        "same widgets and sheet, no logic": bench.programs / "attainable_window",
        "empty window": bench.programs / "empty_window",
    }
    table = Table("Size", ["", "stripped, KiB", "libraries loaded", "of them unused"])
    with VirtualScreen() as screen:
        write_state(screen.path("home"), origin="http://127.0.0.1:9", device_id="bench-desktop")
        for name, program in programs.items():
            stripped = screen.path("stripped")
            subprocess.run(["strip", "-o", stripped, str(program)], check=True)
            size = os.path.getsize(stripped) / 1024
            with ProgramRun(screen, [program], screen.path("home")) as run:
                processes.wait_until_idle(run.pid)
                paths = {os.path.basename(mapped.path) for mapped in psutil.Process(run.pid).memory_maps()}
            libraries = [path for path in paths if ".so" in path]
            # The exit code says whether there are any.
            listed = subprocess.run(["ldd", "-u", str(program)], check=False, capture_output=True, text=True).stdout
            unused = [os.path.basename(line) for line in listed.split() if line.startswith("/")]
            table.rows.append([name, f"{size:.0f}", str(len(libraries)), ", ".join(unused) or "none"])
    table.remark = (
        "Libraries and plugins in the memory of the idle window. Unused: linked to the program, which uses nothing of "
        "them."
    )
    return [table]
