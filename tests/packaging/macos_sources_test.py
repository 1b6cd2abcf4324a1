"""The client's sources, as far as another system can judge that they fit macOS: they compile with Clang and its own
standard library, and nothing in them is for one system only, unless a condition says so."""

import json
import re
import shlex
import subprocess
import unittest

from packaging_support import PACKAGE_BUILD, REPOSITORY, main, needs

CLIENT = REPOSITORY / "client"
SOURCES = sorted(path for path in CLIENT.rglob("*") if path.suffix in (".cpp", ".h") and "build" not in path.parts)

# The header files of C++ and of C within it. Every other one has to be Qt's or the client's.
STANDARD_HEADERS = set("""
    algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono cinttypes climits
    clocale cmath codecvt compare complex concepts condition_variable coroutine csetjmp csignal cstdarg cstddef cstdint
    cstdio cstdlib cstring ctime cuchar cwchar cwctype deque exception execution filesystem format forward_list fstream
    functional future initializer_list iomanip ios iosfwd iostream istream iterator latch limits list locale map memory
    memory_resource mutex new numbers numeric optional ostream queue random ranges ratio regex scoped_allocator
    semaphore set shared_mutex source_location span sstream stack stdexcept stop_token streambuf string string_view
    syncstream system_error thread tuple type_traits typeindex typeinfo unordered_map unordered_set utility valarray
    variant vector version""".split())

# What a condition on the system names.
SYSTEM = r"\bQ_OS_\w+|__linux__|__unix__|__APPLE__|_WIN32|__has_include"


class MacosSources(unittest.TestCase):
    def test_the_client_and_the_icon_maker_compile_with_clang_and_its_standard_library(self):
        needs("clang++")
        commands = json.loads((PACKAGE_BUILD / "compile_commands.json").read_text(encoding="utf-8"))
        # The client as the one unit that it is.
        units = [each for each in commands if re.search(r"/Unity/|/packaging/icons/", each["file"])]
        self.assertEqual(len(units), 3)
        self.assertEqual([_complaints(unit) for unit in units], [""] * 3)

    def test_system_headers_stand_within_a_condition(self):
        self.assertEqual([found for path in SOURCES for found in _system_headers(path)], [])

    def test_no_file_of_one_system_only_is_named(self):
        named = [f"{path.relative_to(REPOSITORY)}:{number}: {line.strip()}" for path in SOURCES
                 for number, line, depth in _lines(path) if depth == 0 and re.search(r'"/(proc|sys|dev|etc)/', line)]
        self.assertEqual(named, [])


def _complaints(command):
    words = [word for word in shlex.split(command["command"])[1:] if word != "-c"]
    place = words.index("-o")
    del words[place:place + 2]
    done = subprocess.run(["clang++", "-stdlib=libc++", "-fsyntax-only", "-Werror", *words],
                          cwd=command["directory"], capture_output=True, text=True, timeout=120, check=False)
    return done.stderr if done.returncode != 0 else ""


def _lines(path):
    """Each line with its number and with how many conditions on the system it stands in."""
    conditions = []
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        directive = re.match(r"\s*#\s*(if|ifdef|ifndef|endif)\b(.*)", line)
        if directive and directive[1] == "endif":
            conditions.pop()
        elif directive:
            conditions.append(re.search(SYSTEM, directive[2]) is not None)
        yield number, line, sum(conditions)


def _system_headers(path):
    for number, line, depth in _lines(path):
        included = re.match(r"\s*#\s*include\s*<([^>]+)>", line)
        if included and depth == 0 and included[1] not in STANDARD_HEADERS and not re.match(r"Qt?[A-Z]", included[1]):
            yield f"{path.relative_to(REPOSITORY)}:{number}: <{included[1]}>"


if __name__ == "__main__":
    main()
