"""Makes the package by the documented command. The other packaging tests look at the result."""

from packaging_support import PACKAGE_BUILD, REPOSITORY, package, run


def main():
    for old in PACKAGE_BUILD.glob("*.deb"):
        old.unlink()
    print(run(REPOSITORY / "tools" / "package", limit=600))
    made = package()
    print(f"{made.name}: {made.stat().st_size} bytes")


if __name__ == "__main__":
    main()
