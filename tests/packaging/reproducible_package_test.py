"""Two builds of one commit give the same package, byte for byte."""

import os
import unittest

from packaging_support import REPOSITORY, copy_sources, empty_folder, main, needs, package, run


class ReproduciblePackage(unittest.TestCase):
    def test_a_fresh_clone_in_another_folder_gives_the_same_bytes(self):
        needs("git")
        if not (REPOSITORY / ".git").exists():
            self.skipTest("this is not a git repository, so there is no commit to build twice")
        folder = empty_folder("reproducible") / "a-folder-with-a-longer-name" / "clone"
        run("git", "clone", "--quiet", REPOSITORY, folder)
        # While a change is not committed yet, both sides have to have it.
        copy_sources(folder)
        # Nothing of the surroundings may show either.
        surroundings = {**os.environ, "TZ": "Pacific/Chatham", "LC_ALL": "C", "HOME": str(folder.parent)}
        run("sh", "-c", "umask 077 && exec tools/package", limit=600, cwd=folder, env=surroundings)
        one, other = package(), package(folder / "build" / "package")
        self.assertEqual(one.name, other.name)
        if one.read_bytes() != other.read_bytes():
            self.fail(self.differences(one, other))

    @staticmethod
    def differences(one, other):
        lists = [set(run("sh", "-c", f"dpkg-deb -c '{each}'; dpkg-deb -f '{each}'; dpkg-deb --ctrl-tarfile '{each}' | "
                                     "tar -xO ./md5sums").splitlines()) for each in (one, other)]
        return "The packages differ:\n" + "\n".join(sorted(lists[0] ^ lists[1]))


if __name__ == "__main__":
    main()
