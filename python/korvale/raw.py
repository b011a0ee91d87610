"""Every exported function of the library by its own name, on records whose arrays NumPy shares.

A function takes what it takes in C, in the same order, and returns what it returns in C. What C writes to places that
are passed by address comes back: arrays that are passed are written in place, those that are left out are made, and
both are returned after the result, as in ``met, distance = ray_intersect(origin, direction, s)``. Vectors and matrices
may be anything NumPy takes; arrays that are written have to be contiguous and of float64.

Records are classes with the fields of the C records: ``Data``, ``data_list_struct``, ``DATAstruct``, ``BorderStatus``,
``BORDERStatus``, ``EquationSystem``, ``PreserveStatus``, ``RayStatus``. A new one is initialised.

>>> import numpy as np
>>> from korvale import raw
>>> points = np.array([[0.0, 0, 0], [4, 0, 0], [4, 4, 0], [0, 4, 0]])
>>> status = raw.BORDERStatus()
>>> status.path = raw.DATAstruct(points)  # wraps the array, no copy
>>> status.distance = 0.5
>>> raw.BORDER(status)
1
>>> status.output.dvals[:, :2].round(9).tolist()  # a view of the record's buffer, no copy
[[-0.5, -0.5], [4.5, -0.5], [4.5, 4.5], [-0.5, 4.5]]

Who owns memory
    A view never outlives its memory, and no record is freed while Python holds it.

    - ``DATAstruct(array)`` and ``record.dvals = array`` wrap a contiguous, writable array of float64, int32 or uint8
      and keep it alive. Functions that write elements in place write them to it.
    - ``record.dvals`` is a view of the buffer the record has now. A function that may give the record another buffer
      (an output that is shaped, an allocation, a disposal) first leaves the present one to its views: they keep their
      numbers, and the record goes on with a buffer of its own. Take the view again after such a call. The same holds
      for wrapped arrays.
    - Arrays in slots (``pvals``) and lists (``next``) are held by the array they stand in and by whoever names them in
      Python. Disposing an array empties it and lets go of them; it does not empty those that somebody else holds.
    - Arrays that are part of a status are its own: their sizes are read only, and after the status has been disposed
      they raise ValueError, while views of them keep their numbers.

What raises
    None for a record (TypeError), sizes beyond a buffer, arrays that hold themselves, a record that another call is
    working on, connectivity that was changed behind a status (ValueError, RuntimeError). Everything else is as the
    library documents it: -1 is returned, not raised.

Threads and Python functions
    Functions on records let other threads run while they work, and refuse records that another call is working on.
    Equations call Python functions that were registered by ``EqAddFunc...``, up to 128 of each number of arguments in
    all systems together; what such a function raises is raised by the call that led to it.

``Border`` keeps its work arrays allocated at every call, as documented; prefer ``BORDER_BORDER`` in loops.
"""

from __future__ import annotations

from typing import Protocol

import numpy as np
from numpy.typing import ArrayLike, NDArray

from . import _raw
from ._raw import *

__all__ = ["I3DVertexAccessor", "I3DVertexCollection"]
__all__ += _raw.__all__


class I3DVertexAccessor(Protocol):
    """What a host's cursor over its vertices has to offer; ``Release``, ``BeginEdit`` and ``EndEdit`` may be missing.

    A method may raise ``HostError(status)``; any other exception is raised by the function that was called.
    """

    def Seek(self, vertex: int) -> object:
        """Makes ``vertex`` the current one."""

    def ReadPositions(self, number: int) -> ArrayLike:
        """``number`` positions [number][3] from the current vertex on."""

    def WritePositions(self, number: int, positions: NDArray[np.float64]) -> int | None:
        """Takes positions [number][3] from the current vertex on. Returns how many it took; None is all."""

    def ReadNormals(self, number: int) -> ArrayLike:
        """``number`` normals [number][3] from the current vertex on."""


class I3DVertexCollection(Protocol):
    """What a host's collection of vertices has to offer."""

    def GetVertexCount(self) -> int:
        """The number of vertices."""

    def GetAccessor(self, zero: int) -> I3DVertexAccessor | None:
        """An accessor; ``zero`` is always 0."""
