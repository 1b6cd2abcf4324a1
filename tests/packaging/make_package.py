"""Makes the package in a fresh clone, by the documented command. The other packaging tests look at the result."""

from packaging_support import CLONE, fresh_clone, package, run


def main():
    fresh_clone(CLONE)
    print(run(CLONE / "tools" / "package", limit=600))
    made = package()
    print(f"{made.name}: {made.stat().st_size} bytes")


if __name__ == "__main__":
    main()
