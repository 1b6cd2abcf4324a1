"""Runs every command in the documents on a fresh Debian 12, in a new clone for each document.

The README comes first, so the packages that it installs are there for the others. The table below replaces commands
that take long or cannot run here, with the reason. All other commands run unchanged.
"""

import pathlib
import re
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1]))

from fresh_machine import roots  # noqa: E402 (the path comes first)
from fresh_machine.documents import blocks, documents  # noqa: E402
from fresh_machine.machine import HOME  # noqa: E402
from fresh_machine.project import clone_into  # noqa: E402
from fresh_machine.testing import main, new_machine, timed  # noqa: E402

# A pattern, what runs instead of the matching part, and why.
SHORT_FORMS = [
    (r"^\./test(?= *(#|$))", "./test state_loading", "all of it runs on a fresh Debian 13"),
    (r"^\./test --all", ". tools/setup.sh; ensure_packages $lint_packages $fuzz_packages", "this is one of its tests"),
    (r"^tools/lint", "tools/lint build/dev TarnwickClient", "./test --all checks all units"),
    (
        r"cmake --build --preset asan && ctest --preset asan -L client",
        "cmake --build --preset asan --target client_tests && ctest --preset asan -R state_loading",
        "with the sanitizers, all of them take long",
    ),
    (r"^cmake --workflow --preset fuzz", r"cmake --preset fuzz -DTARNWICK_FUZZ_SECONDS=2 && \g<0>", "minutes are long"),
    (r"max_total_time=\d+", "max_total_time=5", "an hour is long"),
    (r"^valgrind", r"sudo apt-get install -q valgrind; \g<0>", "the text says to install it"),
    (r"^\./bench start rows", "./bench --rounds 1 start rows", "every start is repeated often"),
    (r"^\./bench(?! start).*", "./bench --rounds 1 size", "it takes ten minutes and large programs to compare with"),
    (r"^build/\S+/TarnwickClient", r"stays_open \g<0>", "it runs until somebody closes it"),
]
# Blocks with one of these can run on a Mac only.
_FOR_A_MAC = re.compile(r"--preset macos|codesign|notarytool")

# The program has started if its window is still open after some seconds.
_SHELL = """
stays_open() { local code=0; QT_QPA_PLATFORM=offscreen timeout 5 "$@" || code=$?; [ $code = 124 ]; }
"""


class Documents(unittest.TestCase):
    def test_every_command_works(self):
        machine = new_machine(self, roots.BOOKWORM, "documents")
        machine.path("/etc/apt/apt.conf.d/90answers").write_text('APT::Get::Assume-Yes "true";\n', encoding="ascii")
        # Several documents compile the same files.
        machine.run("apt-get", "update")
        machine.run("apt-get", "install", "--no-install-recommends", "ccache")
        used = set()
        for path in documents(roots.REPOSITORY):
            print(f"{path.name}:", flush=True)
            clone = self.fresh_clone(machine)
            for block in blocks(path):
                if _FOR_A_MAC.search("\n".join(block.lines)):
                    print(f"SKIPPED: {path.name}: {block.lines[0]} and what follows: for a Mac only", flush=True)
                    continue
                script = "\n".join([_SHELL, *(self.short_form(line, used) for line in block.lines)])
                command = ["bash", "-euxo", "pipefail", "-c", script]
                timed(machine, path.name, *command, folder=clone, limit=1800, CMAKE_CXX_COMPILER_LAUNCHER="ccache")
        self.assertEqual([row[0] for row in SHORT_FORMS if row[0] not in used], [], "no document has these")

    def fresh_clone(self, machine):
        """A new clone, always in the same folder, so that the compiler cache can help."""
        machine.run("rm", "-rf", f"{HOME}/tarnwick")
        return clone_into(machine)

    @staticmethod
    def short_form(line, used):
        for pattern, replacement, reason in SHORT_FORMS:
            shorter, count = re.subn(pattern, replacement, line)
            if count:
                used.add(pattern)
                print(f"  {line.strip()}\n    as {shorter!r}: {reason}", flush=True)
                return shorter
        return line


if __name__ == "__main__":
    main(roots.BOOKWORM)
