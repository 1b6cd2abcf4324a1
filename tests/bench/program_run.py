"""One run of a program on a virtual screen, watched from outside."""

import select
import subprocess

import processes
from harness.client_process import REPOSITORY

# A program that shows no window within this time is broken, in seconds.
_LIMIT = 70


class ProgramRun:
    """Starts the program and waits for the first whole picture of its window."""

    def __init__(self, programs, screen, words, home=None, focus=False):
        self._programs = programs
        self._screen = screen
        self._environment = dict(screen.environment)
        if home is not None:
            self._environment["HOME"] = str(home)
        watcher = [programs / "first_frame", *(["--focus"] if focus else []), screen.file, *words]
        # From the repository's root, where the client finds the logo.
        self._watcher = subprocess.Popen([str(word) for word in watcher], stdin=subprocess.PIPE, cwd=REPOSITORY,
                                         stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, bufsize=0,
                                         env=self._environment)
        try:
            self.pid = int(self._told("pid")[0])
            self.window, wall, used = map(int, self._told("painted"))
        except BaseException:
            self.end()
            raise
        self.first_frame_ms = wall / 1e6
        self.first_frame_processor_ms = used / 1e6

    def end(self):
        self._watcher.stdin.close()
        self._watcher.wait(timeout=10)
        self._watcher.stdout.close()

    def __enter__(self):
        return self

    def __exit__(self, *_exception):
        self.end()

    def processor_ms(self):
        return processes.processor_seconds(self.pid) * 1e3

    def wait_until_idle(self, **options):
        processes.wait_until_idle(self.pid, **options)

    def ask_for_answers(self):
        """Starts asking the window, once a millisecond, whether it answers."""
        return AnswerWatch(self._programs / "answer_watch", self.window, self._environment)

    def _told(self, word):
        told, _, _ = select.select([self._watcher.stdout], [], [], _LIMIT)
        words = self._watcher.stdout.readline().decode().split() if told else []
        if not words or words[0] != word:
            raise RuntimeError(f"no '{word}' from {' '.join(map(str, self._watcher.args))}")
        return words[1:]


class AnswerWatch:
    """Asks a window until `longest_ms` is called."""

    def __init__(self, program, window, environment):
        self._watcher = subprocess.Popen([str(program), str(window)], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                         env=environment)

    def longest_ms(self):
        """The longest time that the window left a question open."""
        told, _ = self._watcher.communicate(timeout=_LIMIT)
        if self._watcher.returncode != 0:
            raise RuntimeError("the window did not answer")
        return int(told) / 1e6
