"""The blocks of docs/hosts.md: each section runs in an empty scene, and its picture is what is in the scene then."""

import pathlib
import re
from collections.abc import Iterator
from typing import NamedTuple

PAGE = pathlib.Path(__file__).resolve().parents[3] / "docs/hosts.md"


class Block(NamedTuple):
    """Lines of Python, where they begin, what they print, and the picture that follows."""

    line: int
    code: str
    printed: str | None
    picture: str | None


def blocks() -> Iterator[Block]:
    """All blocks of the page."""
    text = PAGE.read_text()
    pattern = r"```python\n(.*?)```\n(?:\n```text\n(.*?)```\n)?(?:\n!\[[^]]*\]\(images/([^)]*)\)\n)?"
    for found in re.finditer(pattern, text, re.DOTALL):
        yield Block(text.count("\n", 0, found.start(1)) + 1, *found.groups())
