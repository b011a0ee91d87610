"""Equations as text, over columns."""

from __future__ import annotations

import inspect
import math
import re
from collections.abc import Callable, Iterable, Iterator, Mapping
from typing import Any, TypeVar, overload

import numpy

from . import _input, _korvale
from ._errors import EquationError, Error, refuse, renamed
from ._progress import Progress
from ._types import ColumnLike, Doubles, Number, NumbersLike, ProgressLike

_Function = TypeVar("_Function", bound=Callable[..., float])

# Rows between two reports of progress.
_CHUNK = 65536


class Equations:
    """Equations(names=""): named variables and equations over them, written as text.

    names: variables to declare, such as "h r t".

    Variables are items: `equations["t"] = 0.5`. Names are up to 12 letters, capitals count; PI and E and eighteen
    functions are there from the start: ADD SUBTRACT MULTIPLY DIVIDE POWER NEGATE SIN COS TAN SQRT EXP LOG ASIN ACOS
    ATAN RAND GAUSS ANGLE. Operators are + - * / ^; a division by 0 gives 0; angles are in radians.

    One thing is not as in Python: a sign before an operand binds tighter than ^, so -x ^ 2 is (-x) ^ 2. What the
    language does not have is refused with its right spelling: 2x (write 2 * x), 1e-3 (write 0.001), x ** 2, sin(x).

    >>> korvale.evaluate("-x ^ 2", x=3), korvale.evaluate("0 - x ^ 2", x=3)
    (9.0, -9.0)

    >>> drum = korvale.Equations("h r t")
    >>> drum.add("h = SIN(r * 6 - t) * EXP(0 - r)")
    0
    >>> drum["t"] = 0.5
    >>> drum.evaluate(r=[0, 0.1, 0.2, 0.3]).round(3)
    array([-0.479,  0.09 ,  0.527,  0.714])
    """

    __slots__ = ("_system", "_log", "__weakref__")

    def __init__(self, names: str | Iterable[str] = "") -> None:
        self._system = _korvale.System()
        self._log: list[tuple[Any, ...]] = []
        self._declare(names, False, "Equations")

    # --- Variables ---

    def declare(self, names: str | Iterable[str], *, reserved: bool = False) -> None:
        """Declares variables, each 0 at first; names that exist are left alone.

        A reserved variable takes the result of its equation at the end of a pass (`evaluate_all`) instead of at once.
        """
        self._declare(names, _input.flag(reserved, "Equations.declare", "reserved"), "Equations.declare")

    def _declare(self, names: Any, is_reserved: bool, function: str) -> None:
        text = " ".join(_listed(names, function, "names"))
        try:
            self._system.declare(_input.text(text, function, "names"), is_reserved)
        except Error as error:
            raise renamed(error, function) from None
        if text:
            self._log.append(("declare", text, is_reserved))

    @property
    def variables(self) -> dict[str, float]:
        """The variables with their values, PI and E first; a copy."""
        return {name: self._system.get(name) for name in self._system.variables()}

    def __getitem__(self, name: str) -> float:
        self._require(name)
        return self._system.get(name)

    def __setitem__(self, name: str, value: Number) -> None:
        self._require(name)
        self._system.set(name, _input.number(value, "Equations", name))

    def __contains__(self, name: object) -> bool:
        return name in self._system.variables()

    def __iter__(self) -> Iterator[str]:
        return iter(self._system.variables())

    def __len__(self) -> int:
        """The number of equations; iterating goes through the names of the variables."""
        return len(self._system)

    def __bool__(self) -> bool:
        return True

    def _require(self, name: str) -> None:
        if name not in self:
            raise KeyError(name)

    # --- Equations ---

    @property
    def equations(self) -> list[str]:
        """The texts of the equations, in order."""
        return [entry[1] for entry in self._log if entry[0] == "add"]

    def add(self, equation: str) -> int:
        """Adds an equation, "name = expression", and returns its number, counted from 0.

        Raises `EquationError`, with nothing added, for a text that cannot be read or has anything in it that the
        language does not know: it says which word, where, why, and the right spelling where there is one.

        >>> korvale.Equations("y x").add("y = SIN(x) / frequency")
        Traceback (most recent call last):
        ...
        korvale.EquationError: Equations.add: equation must be readable, but "y = SIN(x) / frequency" is \
refused at character 14: "frequency" is neither a variable nor a function
        """
        number: int = _read(self._system, _input.text(equation, "Equations.add", "equation"), 0, "Equations.add",
                            "equation")
        self._log.append(("add", equation))
        return number

    @overload
    def evaluate(  # type: ignore[misc]
            self, equation: int = 0, columns: None = None, /, *, out: None = None, progress: ProgressLike = None,
            **values: float) -> float: ...

    @overload
    def evaluate(self, equation: int = 0, columns: Mapping[str, ColumnLike] | None = None, /, *,
                 out: Doubles | None = None, progress: ProgressLike = None, **values: ColumnLike) -> Doubles: ...

    def evaluate(self, equation: int = 0, columns: Mapping[str, ColumnLike] | None = None, /, *,
                 out: Doubles | None = None, progress: ProgressLike = None, **values: ColumnLike) -> float | Doubles:
        """Runs one equation, once or for every row of columns.

        equation: its number.
        columns, values: what variables are set to before each run, as a mapping or as keywords: numbers, which stay
            the same, or arrays of one shape. Columns of float64 arrays are read where they are, strided ones too. What
            is not given keeps its value, 0 after `declare`.
        out: where the results go, float64 of that shape; it may be strided, such as a column of points.
        progress: see `Relaxer.run`; it is told of the rows done.

        Returns a float, or an array of the columns' shape. The variables keep the values of the last row.

        >>> wave = korvale.Equations("y x a")
        >>> wave.add("y = a * x ^ 2")
        0
        >>> wave.evaluate(0, a=2, x=[1, 2, 3])
        array([ 2.,  8., 18.])
        >>> wave.evaluate(0, a=2, x=4)
        32.0
        """
        return self._evaluate(equation, _named(columns, values, "Equations.evaluate"), out, progress,
                              "Equations.evaluate")

    def _evaluate(self, equation: Any, values: dict[str, Any], out: Any, progress: Any, name: str) -> float | Doubles:
        number = self._number(equation, name)
        given, shape = self._columns(values, name)
        if shape is None:
            return self._system.evaluate(number)
        result = _input.output(out, shape, name)
        place = result if _are_rows(result) else numpy.array(result, order="C")
        rows = place.reshape(-1)
        with Progress(progress, len(rows), name) as report:
            for first, last in report.parts(_CHUNK):
                self._system.evaluate_rows(number, [(v, column[first:last]) for v, column in given], rows[first:last])
        return _input.deliver(result, place)

    @overload
    def evaluate_all(  # type: ignore[misc]
            self, results: str | Iterable[str] = (), columns: None = None, /, *, progress: ProgressLike = None,
            **values: float) -> dict[str, float]: ...

    @overload
    def evaluate_all(self, results: str | Iterable[str] = (), columns: Mapping[str, ColumnLike] | None = None, /, *,
                     progress: ProgressLike = None, **values: ColumnLike) -> dict[str, Doubles]: ...

    def evaluate_all(self, results: str | Iterable[str] = (), columns: Mapping[str, ColumnLike] | None = None, /, *,
                     progress: ProgressLike = None, **values: ColumnLike) -> dict[str, float] | dict[str, Doubles]:
        """Runs all equations in order, once or for every row of columns.

        results: the variables whose values are wanted after each pass, such as "x y".
        columns, values, progress: as for `evaluate`.

        Returns a dict of the results: floats, or arrays of the columns' shape.

        >>> turn = korvale.Equations("x y a")
        >>> turn.add("x = COS(a)"), turn.add("y = SIN(a)")
        (0, 1)
        >>> turn.evaluate_all("x y", a=[0, turn["PI"]])["x"]
        array([ 1., -1.])
        """
        name = "Equations.evaluate_all"
        wanted = _listed(results, name, "results")
        for variable in wanted:
            if variable not in self:
                raise refuse(name, "results", "name variables", f'"{variable}" is none')
        given, shape = self._columns(_named(columns, values, name), name)
        if shape is None:
            self._system.evaluate_all()
            return {variable: self._system.get(variable) for variable in wanted}
        arrays = {variable: numpy.empty(shape) for variable in wanted}
        rows = [(variable, array.reshape(-1)) for variable, array in arrays.items()]
        with Progress(progress, math.prod(shape), name) as report:
            for first, last in report.parts(_CHUNK):
                self._system.evaluate_all_rows([(v, column[first:last]) for v, column in given],
                                               [(v, row[first:last]) for v, row in rows])
        return arrays

    @property
    def ran_in_blocks(self) -> bool:
        """Whether the last call over columns ran a block of rows at a time: many times as quick, with the same bits.

        It ran row by row for few rows, where equations call RAND, GAUSS (but from a table) or a Python function, where
        one reads a variable that it or a later one sets, and where `out` lies shifted over a column.

        >>> wave = korvale.Equations("y x")
        >>> wave.add("y = x * x"), wave.evaluate(x=range(1000))[3], wave.ran_in_blocks
        (0, 9.0, True)
        """
        in_blocks: bool = self._system.ran_in_blocks
        return in_blocks

    def seed(self, seed: int) -> None:
        """Gives RAND and GAUSS of this system a random generator of its own, or seeds it anew.

        They repeat then whatever else draws, in any thread, and are what `korvale.seed` makes the shared ones give.
        """
        self._system.seed(_input.count(seed, "Equations.seed", "seed", 0, 2**32 - 1))

    def simplify(self) -> None:
        """Replaces functions of constants in all equations by their values."""
        self._system.simplify()
        self._log.append(("simplify",))

    def _number(self, equation: Any, function: str) -> int:
        n = len(self._system)
        number = _input.count(equation, function, "equation", -n) if n else 0
        if n == 0:
            raise refuse(function, "equation", "be the number of an equation", "there is none yet")
        if number >= n:
            raise refuse(function, "equation", f"be the number of one of {n} equations", f"it is {number}")
        return number % n

    def _columns(self, values: dict[str, Any],
                 function: str) -> tuple[list[tuple[str, Doubles]], tuple[int, ...] | None]:
        """Columns as one-dimensional arrays and their common shape; numbers are set at once."""
        given: list[tuple[str, Doubles]] = []
        shape: tuple[int, ...] | None = None
        numbers: list[tuple[str, float]] = []
        for name, value in values.items():
            if name not in self:
                raise refuse(function, "columns", "name variables", f'"{name}" is none')
            column = None if isinstance(value, (int, float)) else _column(value, function, name)
            if column is None or column.ndim == 0:
                numbers.append((name, _input.number(value, function, name)))
                continue
            if shape is None:
                shape = column.shape
            elif column.shape != shape:
                raise refuse(function, name, f"have the shape of the others, {shape}",
                             f"its shape is {column.shape}")
            given.append((name, column if column.ndim == 1 else column.reshape(-1)))
        for name, number in numbers:
            self._system.set(name, number)
        return given, shape

    # --- Functions and tables ---

    @overload
    def function(self, name: str, callable: _Function, *, arguments: int | None = None) -> _Function: ...

    @overload
    def function(self, name: str, callable: None = None, *,
                 arguments: int | None = None) -> Callable[[_Function], _Function]: ...

    def function(self, name: str, callable: Any = None, *, arguments: int | None = None) -> Any:
        """Adds a Python function of no, one or two numbers for the equations added from now on.

        name: up to 12 letters that stand for nothing yet. arguments: how many numbers it takes, where that cannot be
        seen. Without `callable` it decorates a function. What it raises ends the evaluation. A system has room for 64
        functions of each number of arguments. Each call costs about a microsecond: columns of NumPy results are
        quicker where a whole column can be computed.

        >>> equations = korvale.Equations("y x")
        >>> @equations.function("STEP")
        ... def step(x):
        ...     return 0.0 if x < 0 else 1.0
        >>> equations.add("y = STEP(x) + 1")
        0
        >>> equations.evaluate(x=[-1, 1])
        array([1., 2.])
        """
        if callable is None:
            def decorate(decorated: Callable[..., float]) -> Callable[..., float]:
                self.function(name, decorated, arguments=arguments)
                return decorated
            return decorate
        if not hasattr(callable, "__call__"):
            raise refuse("Equations.function", "callable", "be a function", f"it is {callable!r}")
        n = _arguments_of(callable) if arguments is None else _input.count(arguments, "Equations.function",
                                                                          "arguments", 0, 2)
        self._system.function(_input.text(name, "Equations.function", "name"), callable, n)
        self._log.append(("function", name, callable, n))
        return callable

    def make_table(self, name: str, rows: int) -> None:
        """Replaces a function without arguments, such as RAND, by a table of `rows` rows of its values.

        So noise stays the same from pass to pass and moves smoothly with `table_position`. Call it after the equations
        that name the function: each place that does has a column of its own.
        """
        n = _input.count(rows, "Equations.make_table", "rows", 1)
        self._system.make_table(_input.text(name, "Equations.make_table", "name"), n)
        self._log.append(("make_table", name, n))

    def table(self, name: str) -> Doubles:
        """The values of a table, float64 (rows, columns); a copy. (0, 0) where there is none."""
        return self._system.table(_input.text(name, "Equations.table", "name"))

    def fill_table(self, name: str, values: NumbersLike) -> None:
        """Gives the values (rows, columns) of a table that `make_table` made."""
        given = _input.array(values, "Equations.fill_table", "values", "be numbers (rows, columns)")
        try:
            shape = self.table(name).shape
        except Error as error:
            raise renamed(error, "Equations.fill_table") from None
        if given.shape != shape:
            raise refuse("Equations.fill_table", "values", f"have the shape of the table, {shape}",
                         f"its shape is {given.shape}")
        self._system.fill_table(name, given)

    @property
    def table_position(self) -> float:
        """The row at which all tables are read; between two rows values are interpolated."""
        position: float = self._system.table_position
        return position

    @table_position.setter
    def table_position(self, row: float) -> None:
        self._system.set_table_position(_input.number(row, "Equations", "table_position"))

    # --- As a value ---

    def copy(self) -> Equations:
        """The same in a system of its own, such as for another thread."""
        return _restored(*self._state())

    def __repr__(self) -> str:
        names = " ".join(name for name in self if name not in ("PI", "E"))
        return f"<korvale.Equations({names!r}): {'; '.join(self.equations)}>"

    def _state(self) -> tuple[Any, ...]:
        tables = {entry[1]: self.table(entry[1]) for entry in self._log if entry[0] == "make_table"}
        return (list(self._log), self.variables, tables, self.table_position, self._system.table_columns(),
                self._system.seeded)

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Equations):
            return NotImplemented
        mine, others = self._state(), other._state()
        return (mine[:2] == others[:2] and mine[3:] == others[3:]
                and all(numpy.array_equal(table, others[2][name]) for name, table in mine[2].items()))

    __hash__ = None  # type: ignore[assignment]

    def __reduce__(self) -> Any:
        return _restored, self._state()


def _read(system: Any, text: str, first: int, function: str, argument: str) -> int:
    """Adds an equation, of which a person has written what stands from character `first` on: errors name, quote and
    count that alone, in characters where the library counts bytes.
    """
    try:
        number: int = system.add(text)
        return number
    except EquationError as error:
        place = max(0, len(text.encode()[:error.place].decode()) - first)
        why = str(error).rpartition(f" is refused at character {error.place + 1}: ")[2]
        word = error.word
        if first > 0 and why == 'an operand is missing after "="':
            why = "there is nothing in it"
        elif first > 0 and (equals := re.match(r"[\sA-Za-z]*(==?)", text[first:])):
            place, word = equals.start(1), equals[1]
            why = ("there are no comparisons" if word == "==" else
                   "an expression is what stands behind the \"=\" of an equation: write that alone")
        quoted = _quoted(text[first:], place)
        raise EquationError(f"{function}: {argument} must be readable, but {quoted} is refused at character "
                            f"{place + 1}: {why}", function, argument, place, word) from None


def _quoted(text: str, place: int) -> str:
    """A text, or of a long one what is around `place`."""
    most = 400
    if len(text) <= most:
        return f'"{text}"'
    start = min(max(0, place - most * 7 // 8), len(text) - most)
    dots = "..." if start > 0 else "", "..." if start + most < len(text) else ""
    return f'"{dots[0]}{text[start:start + most]}{dots[1]}"'


def _restored(log: list[tuple[Any, ...]], variables: dict[str, float], tables: dict[str, Doubles],
              position: float, columns: list[int], seed: int | None = None) -> Equations:
    equations = Equations()
    if seed is not None:
        equations.seed(seed)
    for action, *arguments in log:
        if action == "declare":
            equations.declare(arguments[0], reserved=arguments[1])
        elif action == "function":
            equations.function(arguments[0], arguments[1], arguments=arguments[2])
        elif action == "add":
            equations.add(arguments[0])
        elif action == "simplify":
            equations.simplify()
        else:  # a table, whose values are at hand, so that nothing is drawn
            equations._log.append((action, *arguments))
    for name, table in tables.items():
        equations._system.restore_table(name, table)
    for name, value in variables.items():
        equations._system.set(name, value)
    equations.table_position = position
    equations._system.set_table_columns(columns)
    return equations


@overload
def evaluate(  # type: ignore[misc]
        expression: str, columns: None = None, /, **values: float) -> float: ...


@overload
def evaluate(expression: str, columns: Mapping[str, ColumnLike] | None = None, /, **values: ColumnLike) -> Doubles: ...


def evaluate(expression: str, columns: Mapping[str, ColumnLike] | None = None, /,
             **values: ColumnLike) -> float | Doubles:
    """The values of one expression over columns, whose names are its variables.

    expression: such as "SIN(x) / x"; see `Equations`, which is quicker for the same expression many times.
    columns, values: numbers, or arrays of one shape, as a mapping or as keywords.

    >>> korvale.evaluate("a * x ^ 2", a=0.5, x=[1, 2, 3])
    array([0.5, 2. , 4.5])
    """
    given = _named(columns, values, "evaluate")
    text = _input.text(expression, "evaluate", "expression")
    result = next(name for name in _names() if name not in given)
    equations = Equations(result)
    try:
        equations.declare(list(given))
    except Error as error:
        raise renamed(error, "evaluate", "columns") from None
    before = f"{result} = "
    _read(equations._system, before + text, len(before), "evaluate", "expression")
    return equations._evaluate(0, given, None, None, "evaluate")


def _names() -> Iterator[str]:
    return ("result" + "x" * n for n in range(7))


def _listed(names: Any, function: str, argument: str) -> list[str]:
    """Names from a text or a list of them."""
    if isinstance(names, str):
        return names.replace(",", " ").replace(";", " ").split()
    must = "be names, in a str or a list"
    given = _input.items(names, function, argument, must)
    if not all(isinstance(name, str) for name in given):
        raise refuse(function, argument, must, "not all are str")
    return given


def _named(columns: Any, values: dict[str, Any], function: str) -> dict[str, Any]:
    """Columns by their names, from a mapping and from keywords."""
    if columns is None:
        return values
    if not hasattr(columns, "keys") or not all(isinstance(name, str) for name in columns.keys()):
        raise refuse(function, "columns", "be a mapping from names to numbers or arrays",
                     f"it is {_input._shown(columns)}")
    return {**{name: columns[name] for name in columns.keys()}, **values}


def _column(value: Any, function: str, name: str) -> Doubles:
    """Numbers as an array of doubles whose stride counts doubles, without a copy where they are that already."""
    if type(value) is numpy.ndarray and value.dtype == numpy.float64 and _are_rows(value):
        return value
    return _input.array(value, function, name, "be numbers")


def _are_rows(array: Doubles) -> bool:
    """Whether values stand where rows are read and written: one after the other, or in steps of whole doubles."""
    return array.flags.aligned and (array.flags.c_contiguous or (array.ndim == 1 and array.strides[0] % 8 == 0))


def _arguments_of(callable: Callable[..., float]) -> int:
    try:
        parameters = inspect.signature(callable).parameters.values()
    except (TypeError, ValueError):
        raise refuse("Equations.function", "arguments", "be given where they cannot be seen",
                     "they are missing") from None
    n = sum(p.kind in (p.POSITIONAL_ONLY, p.POSITIONAL_OR_KEYWORD) and p.default is p.empty for p in parameters)
    if n > 2:
        raise refuse("Equations.function", "callable", "take no, one or two numbers", f"it takes {n}")
    return n
