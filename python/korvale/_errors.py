"""What korvale refuses."""

from __future__ import annotations

from typing import Any


class Error(ValueError):
    """An argument that cannot be used.

    The text is one sentence: the function, the argument, what it must be, what came. `function` and `argument` are
    the two names.
    """

    def __init__(self, message: str, function: str = "", argument: str = "") -> None:
        super().__init__(message)
        self.function = function
        self.argument = argument

    def __reduce__(self) -> Any:
        return type(self), (str(self), self.function, self.argument)


class EquationError(Error):
    """An equation that is refused: the text quotes it and says which word, where, and why.

    `place` is where the trouble starts, in characters from 0, where the message counts from 1; `word` the word or sign
    there, empty at the end.
    """

    def __init__(self, message: str, function: str = "", argument: str = "", place: int = 0, word: str = "") -> None:
        super().__init__(message, function, argument)
        self.place = place
        self.word = word

    def __reduce__(self) -> Any:
        return type(self), (str(self), self.function, self.argument, self.place, self.word)


def renamed(error: Error, function: str, argument: str = "") -> Error:
    """The same refusal in the name of another function, and of another argument where one is given."""
    must = str(error).removeprefix(f"{error.function}: {error.argument} ")
    name = argument or error.argument
    return Error(f"{function}: {name} {must}", function, name)


def refuse(function: str, argument: str, must: str, but: str) -> Error:
    """The error for an argument, in the words of all others."""
    return Error(f"{function}: {argument} must {must}, but {but}", function, argument)
