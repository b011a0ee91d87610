"""Kinds of arrays."""

from typing import Any

import numpy
from numpy.typing import NDArray

Doubles = NDArray[numpy.float64]
Ints = NDArray[numpy.int32]
Truths = NDArray[numpy.bool_]
Numbers = NDArray[Any]
