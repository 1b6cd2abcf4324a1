"""Two builds of one commit give the same package, byte for byte."""

import os
import unittest

from packaging_support import CLONE, empty_folder, fresh_clone, main, package, run


class ReproduciblePackage(unittest.TestCase):
    def test_a_fresh_clone_in_another_folder_gives_the_same_bytes(self):
        # Of the clone that the package was made in, since somebody may be working in the repository.
        folder = fresh_clone(empty_folder("reproducible") / "a-folder-with-a-longer-name" / "clone", CLONE)
        # Nothing of the surroundings may show either.
        surroundings = {**os.environ, "TZ": "Pacific/Chatham", "LC_ALL": "C", "HOME": str(folder.parent)}
        run(folder / "tools" / "package", limit=600, cwd="/", env=surroundings, umask=0o077)
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
