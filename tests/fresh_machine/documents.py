"""The commands in the documents: the code blocks with the language "sh"."""

import re
import typing

_COMMANDS = re.compile(r"^```sh\n(.*?)^```$", re.MULTILINE | re.DOTALL)


class Block(typing.NamedTuple):
    """The lines of one block; a line and its continuations after a backslash are one line."""

    document: str
    lines: list


def documents(repository):
    """The documents with commands, in the order in which a newcomer reads them."""
    first = [repository / "README.md", repository / "CONTRIBUTING.md", repository / "tests" / "README.md"]
    return [path for path in [*first, *sorted((repository / "docs").glob("*.md"))] if path.exists()]


def blocks(path):
    """The blocks of commands."""
    for text in _COMMANDS.findall(path.read_text(encoding="utf-8")):
        yield Block(path.name, [line for line in text.replace("\\\n", " ").splitlines() if line.strip()])
