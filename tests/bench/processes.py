"""What the system tells about a process that somebody else runs."""

import ctypes
import os
import pathlib
import time

_libc = ctypes.CDLL(None, use_errno=True)

# Resets the highest memory use that the system remembers of a process.
_RESET_HIGH_WATER = "5"


def processor_seconds(pid):
    """Processor time of all its threads so far, those that have ended included."""
    clock = ctypes.c_int()
    error = _libc.clock_getcpuclockid(pid, ctypes.byref(clock))
    if error != 0:
        raise ProcessLookupError(error, os.strerror(error))
    return time.clock_gettime(clock.value)


def wait_until_idle(pid, quiet=0.3, share=0.02, limit=60.0):
    """Returns when the process has used no more than that share of a processor for a while.

    No event tells that, and a share is always one of some time.
    """
    end = time.monotonic() + limit
    while time.monotonic() < end:
        before, since = processor_seconds(pid), time.monotonic()
        time.sleep(quiet)
        if processor_seconds(pid) - before <= share * (time.monotonic() - since):
            return
    raise TimeoutError(f"process {pid} is busy after {limit:g} s")


def private_mib(pid):
    """Memory that the process shares with nobody."""
    sizes = _numbers(pid, "smaps_rollup")
    return (sizes["Private_Clean"] + sizes["Private_Dirty"]) / 1024


def proportional_mib(pid):
    """Memory of the process, with what it shares divided by those that share it."""
    return _numbers(pid, "smaps_rollup")["Pss"] / 1024


def reset_peak(pid):
    pathlib.Path(f"/proc/{pid}/clear_refs").write_text(_RESET_HIGH_WATER, encoding="ascii")


def peak_mib(pid):
    """The most memory in use since `reset_peak`, shared memory included."""
    return _numbers(pid, "status")["VmHWM"] / 1024


def resident_mib(pid):
    return _numbers(pid, "status")["VmRSS"] / 1024


def wake_ups(pid):
    """How often each of its threads was put on a processor so far, by the thread's number."""
    counts = {}
    for thread in os.listdir(f"/proc/{pid}/task"):
        status = parse_numbers(pathlib.Path(f"/proc/{pid}/task/{thread}/status").read_text(encoding="utf-8"))
        counts[thread] = status["voluntary_ctxt_switches"] + status["nonvoluntary_ctxt_switches"]
    return counts


def wake_ups_between(before, after):
    """A thread that has ended meanwhile woke up for that at least."""
    ended = len(before.keys() - after.keys())
    return ended + sum(count - before.get(thread, 0) for thread, count in after.items())


def loaded_libraries(pid):
    """The shared libraries and plugins that are mapped into the process."""
    paths = {line.split(maxsplit=5)[5].strip() for line in _lines(pid, "maps") if line.count("/")}
    return sorted(path for path in paths if ".so" in os.path.basename(path))


def family(pid):
    """The process, its descendants, and what runs in its process group."""
    parents, groups = {}, {}
    for name in filter(str.isdigit, os.listdir("/proc")):
        try:
            # The program's name stands in brackets and may hold anything.
            fields = pathlib.Path(f"/proc/{name}/stat").read_text(encoding="utf-8").rpartition(")")[2].split()
        except (FileNotFoundError, ProcessLookupError):
            continue
        parents[int(name)], groups[int(name)] = int(fields[1]), int(fields[2])
    members = {pid} | {each for each, group in groups.items() if group == pid}
    grown = True
    while grown:
        children = {each for each, parent in parents.items() if parent in members} - members
        members |= children
        grown = bool(children)
    return sorted(members)


def naming(path):
    """The processes that have this path in their command line."""
    found = []
    for name in filter(str.isdigit, os.listdir("/proc")):
        try:
            if os.fsencode(path) in pathlib.Path(f"/proc/{name}/cmdline").read_bytes():
                found.append(int(name))
        except (FileNotFoundError, ProcessLookupError):
            continue
    return found


def parse_numbers(text):
    """The lines "Name:  number ..." of a text, as a dictionary."""
    numbers = {}
    for line in text.splitlines():
        name, _, rest = line.partition(":")
        words = rest.split()
        if words and words[0].isdigit():
            numbers[name] = int(words[0])
    return numbers


def _numbers(pid, name):
    return parse_numbers("".join(_lines(pid, name)))


def _lines(pid, name):
    with open(f"/proc/{pid}/{name}", encoding="utf-8", errors="replace") as source:
        return source.readlines()
