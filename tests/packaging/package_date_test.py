"""The one date that a package bears everywhere: the one that is asked for, else the commit's, else the release's."""

import datetime
import io
import os
import re
import subprocess
import tarfile
import unittest

from packaging_support import CLONE, PACKAGE_BUILD, empty_folder, git, is_repository, main, package, run

ASKED_FOR = 1234567890


def dates_in(deb):
    """Every date that the archive and the two archives within it tell."""
    data = deb.read_bytes()
    dates, place = set(), len(b"!<arch>\n")
    while place < len(data):
        head = data[place:place + 60].decode("ascii")
        dates.add(int(head[16:28]))
        length = int(head[48:58])
        place += 60 + length + length % 2
    for option in ("--fsys-tarfile", "--ctrl-tarfile"):
        done = subprocess.run(["dpkg-deb", option, deb], capture_output=True, check=True, timeout=60)
        with tarfile.open(fileobj=io.BytesIO(done.stdout)) as archive:
            dates.update(entry.mtime for entry in archive)
    return dates


class PackageDate(unittest.TestCase):
    def made(self, name, *words, date=None):
        """A package of what is built already, made with these words and with that date in the environment."""
        folder = empty_folder(name)
        environment = {key: value for key, value in os.environ.items() if key != "SOURCE_DATE_EPOCH"}
        if date is not None:
            environment["SOURCE_DATE_EPOCH"] = str(date)
        run("cpack", "-B", folder, *words, cwd=PACKAGE_BUILD, env=environment)
        return package(folder)

    def test_a_date_in_the_environment_is_the_package_s_and_changes_nothing_else(self):
        made = self.made("date-asked-for", date=ASKED_FOR)
        self.assertEqual(dates_in(made), {ASKED_FOR})
        fields = [run("sh", "-c", f"dpkg-deb --ctrl-tarfile '{each}' | tar -xO") for each in (made, package())]
        self.assertEqual(*fields)

    def test_without_it_the_date_is_the_commit_s(self):
        if not is_repository():
            self.skipTest("this is not a git repository, so there is no commit")
        self.assertEqual(dates_in(self.made("date-of-commit")), {int(git("log", "-1", "--format=%ct", folder=CLONE))})

    def test_outside_of_a_repository_the_date_is_the_newest_release_s(self):
        changes = (CLONE / "CHANGELOG.md").read_text(encoding="utf-8")
        day = re.search(r"^## \S+ - (\d{4}-\d{2}-\d{2})$", changes, re.MULTILINE)[1]
        released = datetime.datetime.fromisoformat(f"{day}T00:00:00+00:00").timestamp()
        # A folder within a repository that is not the client's own.
        outside = empty_folder("no-repository") / "sources"
        outside.mkdir()
        made = self.made("date-of-release", "-D", f"CPACK_TARNWICK_SOURCE_DIR={outside}")
        self.assertEqual(dates_in(made), {released})


if __name__ == "__main__":
    main()
