"""Numeric geometry: arrays, borders of outlines, equations."""

from korvale._korvale import Array, Equations, offset, offset_with_holes
from korvale._version import __version__

__all__ = ["Array", "Equations", "__version__", "offset", "offset_with_holes"]
