"""What the system reports about another process."""

import ctypes
import os
import pathlib
import time

import psutil

_libc = ctypes.CDLL(None, use_errno=True)

# Resets the system's record of a process's peak memory.
_RESET_HIGH_WATER = "5"

MIB = 1024 * 1024


def processor_ms(pid):
    """Processor time of all its threads so far, including threads that have ended, to the nanosecond."""
    clock = ctypes.c_int()
    error = _libc.clock_getcpuclockid(pid, ctypes.byref(clock))
    if error != 0:
        raise ProcessLookupError(error, os.strerror(error))
    return time.clock_gettime_ns(clock.value) / 1e6


def wait_until_idle(pid, quiet=0.3, share=0.02, limit=60.0):
    """Returns when the process has used no more than this share of a processor for the time `quiet`. No event reports
    that.
    """
    end = time.monotonic() + limit
    while time.monotonic() < end:
        before, since = processor_ms(pid), time.monotonic()
        time.sleep(quiet)
        if processor_ms(pid) - before <= share * (time.monotonic() - since) * 1e3:
            return
    raise TimeoutError(f"process {pid} is busy after {limit:g} s")


def private_mib(pid):
    """Memory that the process does not share."""
    return psutil.Process(pid).memory_full_info().uss / MIB


def proportional_mib(pid):
    """Memory of the process; shared memory is divided by the number of processes that share it."""
    return psutil.Process(pid).memory_full_info().pss / MIB


def resident_mib(pid):
    return psutil.Process(pid).memory_info().rss / MIB


def reset_peak(pid):
    pathlib.Path(f"/proc/{pid}/clear_refs").write_text(_RESET_HIGH_WATER, encoding="ascii")


def peak_mib(pid):
    """The peak of resident memory since `reset_peak`, including shared memory."""
    return _status(f"/proc/{pid}/status")["VmHWM"] / 1024


def wake_ups(pid):
    """How often each of its threads has been scheduled so far, by thread number."""
    counts = {}
    for thread in os.listdir(f"/proc/{pid}/task"):
        status = _status(f"/proc/{pid}/task/{thread}/status")
        counts[thread] = status["voluntary_ctxt_switches"] + status["nonvoluntary_ctxt_switches"]
    return counts


def wake_ups_between(before, after):
    """A thread that has ended meanwhile counts as one wake-up at least."""
    ended = len(before.keys() - after.keys())
    return ended + sum(count - before.get(thread, 0) for thread, count in after.items())


def _status(file):
    """The numbers in a file with lines of the form "Name:  number ..."."""
    lines = (line.split() for line in pathlib.Path(file).read_text(encoding="utf-8").splitlines())
    return {words[0][:-1]: int(words[1]) for words in lines if len(words) > 1 and words[1].isdigit()}
