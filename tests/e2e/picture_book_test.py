"""When does a picture of the documentation count as changed, and is each of them of use?"""

import os
import re
import subprocess
import tempfile
import unittest

from harness.client_process import REPOSITORY
from harness.picture_book import PictureBook, look_different

DOCS = os.path.join(REPOSITORY, "docs")
PICTURES = os.path.join(DOCS, "pictures")
KEPT = os.path.join(PICTURES, "linked.png")

# In that picture: the sentence in the status card, and the card's colour.
SENTENCE = 39, 195, 210, 17
CARD = "#2a1308"


class PictureComparison(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="tarnwick-pictures-")
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def test_a_picture_looks_like_itself(self):
        self.assertFalse(look_different(KEPT, self.changed()))

    def test_a_hardly_lighter_card_makes_a_difference(self):
        self.assertTrue(look_different(KEPT, self.changed("-fill", "#30190e", "-opaque", CARD)))
        self.assertTrue(look_different(KEPT, self.changed("-fill", "#2a130e", "-opaque", CARD)))

    def test_the_least_difference_that_a_colour_can_have_makes_none(self):
        self.assertFalse(look_different(KEPT, self.changed("-fill", "#2b1409", "-opaque", CARD)))

    def test_a_label_that_moved_by_two_pixels_makes_a_difference(self):
        for right, down in ((2, 0), (0, 2)):
            self.assertTrue(look_different(KEPT, self.moved(SENTENCE, right, down)), (right, down))

    def test_only_what_changes_anyway_is_left_out(self):
        left, top, width, height = SENTENCE
        moved = self.moved(SENTENCE, 2, 0)
        self.assertFalse(look_different(KEPT, moved, [(left, top, width + 2, height)]))
        self.assertTrue(look_different(KEPT, moved, [(left, top, width // 2, height)]))
        self.assertTrue(look_different(KEPT, moved, [(left, top, width + 2, height // 2)]))

    def test_another_size_makes_a_difference(self):
        self.assertTrue(look_different(KEPT, self.changed("-crop", "1220x1070+0+0", "+repage")))

    def test_a_picture_is_replaced_only_by_one_that_looks_different(self):
        book = PictureBook(os.path.join(self.folder, "book"))
        one, other = self.changed("-strip"), self.moved(SENTENCE, 2, 0)
        self.assertEqual([book.keep(picture, "a.png") for picture in (one, one, other, other)],
                         [True, False, True, False])

    def moved(self, box, right, down):
        left, top, width, height = box
        return self.changed("(", "+clone", "-crop", f"{width}x{height}+{left}+{top}", "+repage", ")",
                            "-geometry", f"+{left + right}+{top + down}", "-composite")

    def changed(self, *operations):
        path = os.path.join(self.folder, f"{len(os.listdir(self.folder))}.ppm")
        subprocess.run(["convert", KEPT, *operations, path], check=True, timeout=60)
        return path


class PicturesInTheDocumentation(unittest.TestCase):
    def test_each_picture_is_shown_somewhere_and_each_that_is_shown_exists(self):
        shown = set()
        for folder, prefix in ((REPOSITORY, "docs/pictures/"), (DOCS, "pictures/")):
            for name in os.listdir(folder):
                if name.endswith(".md"):
                    with open(os.path.join(folder, name), encoding="utf-8") as page:
                        shown.update(re.findall(rf"!\[[^]]+\]\({prefix}([^)]+)\)", page.read()))
        self.assertEqual(sorted(shown), sorted(os.listdir(PICTURES)))


if __name__ == "__main__":
    unittest.main()
