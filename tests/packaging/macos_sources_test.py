"""The client's and the icon maker's sources, as far as another system can judge that they fit macOS: they compile with
Clang and its own standard library, the way a Mac reads their conditions too, and nothing in them is for one system
only, unless a condition says so."""

import json
import pathlib
import re
import shlex
import subprocess
import unittest

from packaging_support import CLONE, PACKAGE_BUILD, empty_folder, main, needs, run

# As the package was made of them.
SOURCES = sorted(path for folder in ("client", "packaging") for path in (CLONE / folder).rglob("*")
                 if path.suffix in (".cpp", ".h"))

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

# What programs call of the C library: C's own functions, and what compilers put in by themselves.
STANDARD_FUNCTIONS = set("""
    abort atexit atof atoi bsearch calloc clock exit fclose fflush fopen fprintf fputc fputs fread free fseek ftell
    fwrite getenv ldiv malloc memchr memcmp memcpy memmove memset printf putchar puts qsort realloc snprintf strcat
    strchr strcmp strcpy strlen strncmp strncpy strrchr strstr strtod strtol strtoul time vsnprintf""".split())
COMPILERS_FUNCTIONS = r"__libc_start_main|__stack_chk_fail|__cxa_(at_?exit|finalize)|__errno_location|__\w+_chk"

# Parts of Qt that one system's Qt has and another one's has not.
ONE_SYSTEMS_QT = r"\bQX11|\bQDBus|\bQWayland|\bQNativeInterface\b"

# What a condition on the system names, and whether a Mac has it.
ON_MACOS = {
    "Q_OS_MACOS": True, "Q_OS_MAC": True, "Q_OS_DARWIN": True, "Q_OS_UNIX": True, "Q_OS_LINUX": False,
    "Q_OS_WIN": False, "Q_OS_WINDOWS": False, "Q_OS_WIN32": False, "__APPLE__": True, "__linux__": False,
    "__unix__": False, "_WIN32": False}
SYSTEM = r"\bQ_OS_\w+|\b__(linux|unix|APPLE)(__)?\b|\b_WIN32\b|__has_include"


class MacosSources(unittest.TestCase):
    def setUp(self):
        self.assertLessEqual({"main.cpp", "create_page.cpp", "icon_maker.cpp"}, {path.name for path in SOURCES})

    def test_they_compile_with_clang_and_its_standard_library(self):
        needs("clang++")
        units = _units()
        self.assertEqual(len(units), 3)
        self.assertEqual([_complaints(unit["command"], unit) for unit in units], [""] * 3)

    def test_they_compile_with_the_branches_that_a_mac_takes(self):
        needs("clang++")
        folder = empty_folder("as-on-macos")
        units = _units()
        conditions = [line for path in (*SOURCES, *(pathlib.Path(unit["file"]) for unit in units))
                      for line in _settle_conditions(path, folder)]
        self.assertEqual([line for line in conditions if re.search(SYSTEM, line)], [], "ON_MACOS does not know these")
        commands = [unit["command"].replace(f"{CLONE}/", f"{folder}/") for unit in units]
        self.assertEqual([_complaints(command, unit) for command, unit in zip(commands, units)], [""] * 3)

    def test_system_headers_stand_within_a_condition(self):
        self.assertEqual([found for path in SOURCES for found in _system_headers(path)], [])

    def test_what_one_system_alone_has_is_named_within_a_condition(self):
        named = [f"{path.relative_to(CLONE)}:{number}: {line.strip()}" for path in SOURCES
                 for number, line, depth in _lines(path)
                 if depth == 0 and re.search(rf'"/(proc|sys|dev|etc)/|{ONE_SYSTEMS_QT}', line)]
        self.assertEqual(named, [])

    def test_no_function_of_one_system_only_is_called(self):
        needs("nm")
        for program in ("client/TarnwickClient", "packaging/icon_maker"):
            with self.subTest(program=program):
                called = re.findall(r" U (\w+)@GLIBC_", run("nm", "--dynamic", PACKAGE_BUILD / program))
                self.assertIn("strlen", called)
                self.assertEqual([name for name in called if name not in STANDARD_FUNCTIONS
                                  and not re.fullmatch(COMPILERS_FUNCTIONS, name)], [])


def _units():
    """The compiler's calls: one for the client, which is one unit, and one for each file of the icon maker."""
    commands = json.loads((PACKAGE_BUILD / "compile_commands.json").read_text(encoding="utf-8"))
    wanted = r"/TarnwickClient\.dir/Unity/|/packaging/icons/[^/]+$"
    return [each for each in commands if re.search(wanted, each["file"])]


def _complaints(command, unit):
    words = [word for word in shlex.split(command)[1:] if word != "-c"]
    place = words.index("-o")
    del words[place:place + 2]
    done = subprocess.run(["clang++", "-stdlib=libc++", "-fsyntax-only", "-Werror", *words],
                          cwd=unit["directory"], capture_output=True, text=True, timeout=120, check=False)
    return done.stderr if done.returncode != 0 else ""


def _settle_conditions(path, folder):
    """Copies a file, with what its conditions ask of the system answered as on a Mac. Returns the conditions. Qt's own
    headers stay as they are: they could not be read here otherwise."""
    def answer(match):
        known = ON_MACOS.get(match["name"])
        return match[0] if known is None else f"{match['negated'] or ''}{int(known)}"

    def settled(line):
        if not re.match(r"\s*#\s*(el)?ifn?(def)?\b", line):
            return line
        line = re.sub(r"(?P<hash>#\s*)ifdef\s+(\w+)", r"\g<hash>if defined(\2)", line)
        line = re.sub(r"(?P<hash>#\s*)ifndef\s+(\w+)", r"\g<hash>if !defined(\2)", line)
        return re.sub(r"(?P<negated>!\s*)?\bdefined\s*\(?\s*(?P<name>\w+)\s*\)?", answer, line)

    lines = [settled(line) for line in path.read_text(encoding="utf-8").splitlines()]
    target = folder / path.relative_to(CLONE)
    target.parent.mkdir(parents=True, exist_ok=True)
    target.write_text("\n".join(lines).replace(f"{CLONE}/", f"{folder}/") + "\n", encoding="utf-8")
    return [line for line in lines if re.match(r"\s*#\s*(el)?if", line)]


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
            yield f"{path.relative_to(CLONE)}:{number}: <{included[1]}>"


if __name__ == "__main__":
    main()
