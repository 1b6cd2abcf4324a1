"""The documents' links lead to files and headings that exist, and every code block names its language."""

import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).parents[2]
DOCUMENTS = [*ROOT.glob("*.md"), *ROOT.glob("docs/**/*.md"), *ROOT.glob("tests/**/*.md")]
BLOCK = re.compile(r"^ *```(\S*)\n.*?^ *```$", re.MULTILINE | re.DOTALL)
LINK = re.compile(r"\]\((?!\w+:)([^)#]*)#?([^)]*)\)")
HEADING = re.compile(r"^#+ (.+)$", re.MULTILINE)


def prose(document):
    return BLOCK.sub("", document.read_text(encoding="utf-8"))


def anchors(document):
    return {re.sub(r"[^\w -]", "", heading.lower()).replace(" ", "-") for heading in HEADING.findall(prose(document))}


class Documents(unittest.TestCase):
    def test_every_link_leads_somewhere(self):
        links = [(document, *link) for document in DOCUMENTS for link in LINK.findall(prose(document))]
        self.assertGreater(len(links), len(DOCUMENTS))
        for document, path, anchor in links:
            target = (document.parent / path) if path else document
            with self.subTest(document=document.name, path=path, anchor=anchor):
                self.assertTrue(target.exists())
                self.assertTrue(not anchor or anchor in anchors(target))

    def test_every_code_block_names_its_language(self):
        for document in DOCUMENTS:
            with self.subTest(document=document.name):
                self.assertNotIn("", BLOCK.findall(document.read_text(encoding="utf-8")))


if __name__ == "__main__":
    unittest.main()
