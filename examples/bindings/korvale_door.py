"""Calls of korvale_c.h as Python likes them: errors are raised, handles released at the end of a `with`."""

import contextlib
import threading
from ctypes import CDLL, POINTER, byref, sizeof

import korvale_c


class Door:
    """The library at a path. Calls let other threads run, and functions of Python that they come to wait for theirs."""

    def __init__(self, path):
        self.library = korvale_c.declare(CDLL(path))
        self.thread = threading.local()

    def run(self, name, *arguments):
        """Calls what cannot fail; what a function of Python has raised meanwhile is raised again."""
        result = getattr(self.library, "korvale_" + name)(*arguments)
        failed = self.thread.__dict__.pop("failed", None)
        if failed is not None:
            raise failed
        return result

    def call(self, name, *arguments):
        """Calls what takes an error last; what it refuses is raised."""
        error = korvale_c.korvale_error()
        if self.run(name, *arguments, byref(error)) != korvale_c.KORVALE_OK:
            raise ValueError(error.text.decode())

    @contextlib.contextmanager
    def made(self, kind, name, *arguments):
        """A handle, released in the end."""
        handle = POINTER(kind)()
        self.call(name, *arguments, byref(handle))
        try:
            yield handle
        finally:
            getattr(self.library, korvale_c.FREE[kind])(handle)

    def options(self, kind, **changed):
        """The defaults of options, with some changed."""
        options = kind()
        getattr(self.library, korvale_c.DEFAULTS[kind])(byref(options), sizeof(options))
        for name, value in changed.items():
            setattr(options, name, value)
        return options

    def callback(self, kind, function, stop=int):
        """A function of Python as one of C, as long as it is kept. Nothing may unwind through the library: what it
        raises waits for the end of the call, and `stop` says what to return instead."""

        def guarded(*arguments):
            try:
                return function(*arguments)
            except BaseException as failed:
                self.thread.__dict__.setdefault("failed", failed)
                return stop()

        return kind(guarded)
