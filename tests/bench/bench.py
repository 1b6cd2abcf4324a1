"""Measures whole processes from outside. Run by ./bench, which first builds the measured programs."""

import argparse
import os
import pathlib
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "e2e"))

import idle_part  # noqa: E402 (the path comes first)
import peers_part  # noqa: E402
import rows_part  # noqa: E402
import size_part  # noqa: E402
import start_part  # noqa: E402

PARTS = {"start": start_part, "rows": rows_part, "idle": idle_part, "size": size_part, "peers": peers_part}


class Bench:
    """What every part needs: where the programs are, how often to measure, and the folder for results."""

    def __init__(self, build, rounds):
        self.client = build / "client" / "Tarnwick"
        self.programs = build / "tests" / "bench"
        self.folder = build
        self.rounds = rounds

    def progress(self, part, done, all_of_them):
        if sys.stderr.isatty():
            print(f"\r{part}: {done} of {all_of_them} ", end="" if done < all_of_them else "\r", file=sys.stderr)


def machine():
    """One line about the machine, because figures mean nothing without it."""
    facts = pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8").splitlines()
    model = next((line.partition(":")[2].strip() for line in facts if line.startswith("model name")), "unknown")
    return (
        f"{os.cpu_count()} processors ({model}), Linux {os.uname().release}, "
        f"load at the beginning {os.getloadavg()[0]:.1f}, {time.strftime('%Y-%m-%d')}"
    )


def main():
    parser = argparse.ArgumentParser(prog="./bench", description=__doc__)
    parser.add_argument("parts", nargs="*", metavar="PART", help=f"which parts: {', '.join(PARTS)}; else all of them")
    parser.add_argument("--build", type=pathlib.Path, required=True, help=argparse.SUPPRESS)
    parser.add_argument("--rounds", type=int, default=20, help="how many starts of each program (20)")
    arguments = parser.parse_args()
    if unknown := set(arguments.parts) - set(PARTS):
        parser.error(f"no part {', '.join(sorted(unknown))}; there are {', '.join(PARTS)}")

    bench = Bench(arguments.build.resolve(), arguments.rounds)
    results = [machine() + "\n"]
    print(*results, flush=True)
    for name in arguments.parts or PARTS:
        for table in PARTS[name].measure(bench):
            print(table, flush=True)
            results.append(str(table))
    (bench.folder / "results.md").write_text("\n".join(results), encoding="utf-8")
    print(f"Results: {bench.folder / 'results.md'}")


if __name__ == "__main__":
    main()
