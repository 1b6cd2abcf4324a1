"""Measures whole processes from outside. Run by ./bench, which builds what is measured and tells where it is."""

import argparse
import os
import pathlib
import shutil
import sys
import time

_HERE = pathlib.Path(__file__).resolve().parent
_DOCUMENTS = _HERE.parent.parent / "docs"
sys.path.insert(0, str(_HERE.parent / "e2e"))

import idle_part  # noqa: E402 (the path comes first)
import peers_part  # noqa: E402
import rows_part  # noqa: E402
import size_part  # noqa: E402
import start_part  # noqa: E402
from report import Table, publish, write_results  # noqa: E402

PARTS = {"start": start_part, "rows": rows_part, "idle": idle_part, "size": size_part, "peers": peers_part}


class Bench:
    """What every part needs: where the programs are, how often to measure, where results go."""

    def __init__(self, build, folder, rounds):
        self.client = build / "client" / "TarnwickClient"
        self.service = build / "tarnwick" / "tarnwick-service"
        self.programs = build / "tests" / "bench"
        self.folder = folder
        self.rounds = rounds

    def progress(self, part, done, all_of_them):
        if sys.stderr.isatty():
            print(f"\r{part}: {done} of {all_of_them} ", end="" if done < all_of_them else "\r", file=sys.stderr)


def machine():
    """One line about the machine, since no figure means anything without it."""
    facts = pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8").splitlines()
    model = next((line.partition(":")[2].strip() for line in facts if line.startswith("model name")), "unknown")
    load = os.getloadavg()[0]
    return (f"{os.cpu_count()} processors ({model}), Linux {os.uname().release}, "
            f"load at the beginning {load:.1f}, {time.strftime('%Y-%m-%d')}")


def main():
    parser = argparse.ArgumentParser(prog="./bench", description=__doc__)
    parser.add_argument("parts", nargs="*", metavar="PART", help=f"which parts: {', '.join(PARTS)}; else all of them")
    parser.add_argument("--build", type=pathlib.Path, required=True, help=argparse.SUPPRESS)
    parser.add_argument("--results", type=pathlib.Path, required=True, help=argparse.SUPPRESS)
    parser.add_argument("--rounds", type=int, default=20, help="how many starts of each program (20)")
    parser.add_argument("--publish", action="store_true", help="put the results of all parts into docs/performance.md")
    arguments = parser.parse_args()
    if arguments.publish and arguments.parts:
        parser.error("only the results of all parts together can be published")
    unknown = set(arguments.parts) - set(PARTS)
    if unknown:
        parser.error(f"no part {', '.join(sorted(unknown))}; there are {', '.join(PARTS)}")

    arguments.results.mkdir(parents=True, exist_ok=True)
    bench = Bench(arguments.build.resolve(), arguments.results.resolve(), arguments.rounds)
    about, tables = machine(), []
    print(about)
    for name in arguments.parts or PARTS:
        measured = PARTS[name].measure(bench)
        for table in [measured] if isinstance(measured, Table) else measured:
            print(table.as_text())
            tables.append(table)
        text = write_results(bench.folder, about, tables)
    if arguments.publish:
        note = _DOCUMENTS / "performance.md"
        note.write_text(publish(note.read_text(encoding="utf-8"), text), encoding="utf-8")
        shutil.copy(bench.folder / "scaling.svg", _DOCUMENTS / "pictures")
    print(f"\nResults: {bench.folder}")


if __name__ == "__main__":
    main()
