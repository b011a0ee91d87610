"""Results with several fields as values."""

from __future__ import annotations

from collections.abc import Callable
from typing import Any, TypeVar

import numpy

_Kind = TypeVar("_Kind")


def _is_same(a: Any, b: Any) -> bool:
    if isinstance(a, numpy.ndarray) or isinstance(b, numpy.ndarray):
        return isinstance(a, numpy.ndarray) and isinstance(b, numpy.ndarray) and numpy.array_equal(a, b)
    return bool(a == b)


def _equal(self: tuple[Any, ...], other: object) -> bool:
    return isinstance(other, tuple) and len(self) == len(other) and all(map(_is_same, self, other))


def _unequal(self: tuple[Any, ...], other: object) -> bool:
    return not _equal(self, other)


def compared(kind: type[_Kind]) -> type[_Kind]:
    """Named tuples whose fields may be arrays: `==` and `!=` give one truth, and there is no hash."""
    for name, what in (("__eq__", _equal), ("__ne__", _unequal), ("__hash__", None)):
        setattr(kind, name, what)
    return kind


def described(**fields: str) -> Callable[[type[_Kind]], type[_Kind]]:
    """Named tuples whose fields have these texts as their help."""
    def describe(kind: type[_Kind]) -> type[_Kind]:
        for name, text in fields.items():
            getattr(kind, name).__doc__ = text
        return kind
    return describe
