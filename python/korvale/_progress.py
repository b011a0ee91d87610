"""Telling of long work."""

from __future__ import annotations

from collections.abc import Callable, Iterator
from typing import Any, TypeVar

from ._errors import refuse

Result = TypeVar("Result")


class Progress:
    """Who is told how far work has come, as a context.

    `who` is None, a function of the number done, and of `more`, that returns False to stop; or a bar with `update(n)`,
    such as tqdm's; or the class of such bars, of which one is made with `total` and closed in the end. Anything else is
    refused in the name of `function`.
    """

    def __init__(self, who: Any, total: int, function: str) -> None:
        if not (who is None or callable(who) or hasattr(who, "update")):
            raise refuse(function, "progress", "be a function, a bar with update(n), or the class of such bars",
                         f"it is {who!r}")
        self._owns = isinstance(who, type)
        self._who = who(total=total) if self._owns else who
        self._is_bar = hasattr(self._who, "update")
        self._total = total
        self._done = 0

    def __enter__(self) -> Progress:
        return self

    def __call__(self, done: int, *more: Any) -> bool:
        """Tells it, and returns whether to go on."""
        if self._who is None:
            return True
        if self._is_bar:
            self._who.update(done - self._done)
            self._done = done
            return True
        return self._who(done, *more) is not False

    def parts(self, size: int) -> Iterator[tuple[int, int]]:
        """Parts of the work, (first, last), of nearly equal sizes up to `size`: tells of each once it is done. Without
        anybody to tell there is one.
        """
        count = 1 if self._who is None else max(1, -(-self._total // size))
        for k in range(count):
            last = (k + 1) * self._total // count
            yield k * self._total // count, last
            if not self(last):
                return

    def __exit__(self, *ignored: Any) -> None:
        if self._owns and hasattr(self._who, "close"):
            self._who.close()


def told(who: Any, function: str, work: Callable[[Progress | None], Result]) -> Result:
    """What `work` gives, which tells of the thousandths done."""
    if who is None:
        return work(None)
    with Progress(who, 1000, function) as report:
        result = work(report)
        report(1000)
    return result
