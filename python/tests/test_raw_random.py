"""No sequence of calls crashes: random functions on random records, with views kept and written meanwhile."""

import inspect
import os
import random
import re
import subprocess
import sys
import unittest

import numpy as np
from korvale import raw

# Ends the process; adds to a list that the process keeps; keeps its work arrays.
LEFT_OUT = {"MwApplicationBugCheck", "RegisterWindowMessageA", "Border"}
TABLES = {"EqMakeTable", "EqMakeTableByName"}  # every call multiplies the columns
NUMBERS = [0.0, 1.0, -1.0, 0.5, 3.0, 1e-7, 1e9, float("nan"), float("inf")]
WORDS = ["x", "y", "x y", "y = x + 1", "x = SIN y * 2", "y = RAND", "RAND", "SIN", "HOST", "y = (", ""]
STATUSES = [raw.BorderStatus, raw.BORDERStatus, raw.EquationSystem, raw.PreserveStatus, raw.RayStatus]


class Player:
    """Random calls from a seed."""

    def __init__(self, seed):
        self.random = random.Random(seed)
        self.numpy = np.random.default_rng(seed)
        self.records = {kind: [kind() for _ in range(3)] for kind in
                        [raw.Data, raw.data_list_struct, raw.DATAstruct, *STATUSES]}
        self.views = []
        self.functions = []
        for name in raw.__all__:
            function = getattr(raw, name)
            if inspect.isbuiltin(function) and name not in LEFT_OUT:
                signature = function.__doc__.split("\n")[0].partition("(")[2].rpartition(")")[0]
                kinds = re.findall(r"(\w+): (?:korvale\._raw\.)?(\w+)", signature)
                self.functions.append((function, kinds))

    def array(self):
        shape = self.random.choice([(0, 3), (1, 3), (4, 3), (7, 3), (3, 9), (2, 9), (12, 2), (5,), (1, 6), (30, 3)])
        kind = self.random.choice([np.float64, np.float64, np.float64, np.int32, np.uint8])
        values = self.numpy.integers(0, 5, shape) if self.random.random() < 0.6 else self.numpy.normal(0, 3, shape)
        with np.errstate(invalid="ignore"):
            return np.ascontiguousarray(values.astype(kind))

    def record(self, kind):
        pool = self.records[kind]
        if self.random.random() < 0.25:
            made = kind(self.array()) if kind not in STATUSES else kind()
            pool[self.random.randrange(len(pool))] = made
        if kind is raw.DATAstruct and self.random.random() < 0.1:
            part = self.part()
            if part is not None:
                return part
        return self.random.choice(pool)

    def part(self):
        """A record that is part of a status."""
        status = self.random.choice(self.records[self.random.choice(STATUSES[1:])])
        found = [getattr(status, name) for name in dir(status) if not name.startswith("_") and name != "cell"]
        found = [part for part in found if isinstance(part, raw.DATAstruct)]
        return self.random.choice(found) if found else None

    def argument(self, name, kind):
        if self.random.random() < 0.02:
            return None
        if kind == "int":
            return self.random.choice([-1, 0, 1, 2, 3, 4, 5, 8, 15, 18])
        if kind == "float":
            return self.random.choice(NUMBERS)
        if kind == "str":
            return self.random.choice(WORDS)
        for record in self.records:
            if record.__name__ == kind:
                return self.record(record)
        if name == "function":
            return lambda *values: 1.0 + sum(values)
        if name == "collection":
            return None
        return self.numpy.normal(0, 3, self.random.choice([3, 3, 3, 16, 16, 9, 6, 4, (4, 4)]))

    def change(self):
        """Changes a record from outside, as a program might."""
        kind = self.random.choice([raw.Data, raw.DATAstruct, raw.data_list_struct, *STATUSES])
        record = self.record(kind)
        if kind in STATUSES:
            names = [name for name in dir(record) if not name.startswith("_") and name != "cell"]
            name = self.random.choice(names)
            other = self.random.choice([raw.Data, raw.DATAstruct])
            setattr(record, name, self.random.choice([1, 0.5, None, self.record(other)]))
            return
        name = self.random.choice(["count", "dim", "type", "dvals", "ivals", "bvals", "pvals", "next", "view", "view"])
        if name == "view":
            view = self.random.choice([record.dvals, record.ivals, record.bvals])
            if view is not None:
                self.views = self.views[-20:] + [view]
        elif name in ("count", "dim", "type"):
            setattr(record, name, self.random.choice([-1, 0, 1, 2, 3, 4, 9, 12, 300]))
        elif name == "pvals":
            record.pvals = [self.record(raw.DATAstruct) for _ in range(self.random.randrange(1, 4))]
        elif name == "next":
            record.next = self.record(kind)
        else:
            setattr(record, name, self.array())

    def turn(self):
        try:
            if self.random.random() < 0.3:
                self.change()
            elif self.views and self.random.random() < 0.2:
                view = self.random.choice(self.views)
                float(view.sum())
                if view.flags.writeable and view.size:
                    view.flat[self.random.randrange(view.size)] = self.random.randrange(4)
            else:
                function, kinds = self.random.choice(self.functions)
                if function.__name__ in TABLES and self.random.random() < 0.7:
                    self.records[raw.EquationSystem] = [raw.EquationSystem() for _ in range(3)]
                function(*[self.argument(*kind) for kind in kinds])
                return 1
        except (ValueError, TypeError, RuntimeError, AttributeError, IndexError, OverflowError):
            pass
        return 0


def play(seed, turns):
    """The number of calls that did not raise."""
    player = Player(seed)
    return sum(player.turn() for _ in range(turns))


class RandomCallsTest(unittest.TestCase):
    def test_no_sequence_of_calls_crashes(self):
        turns = int(os.environ.get("KORVALE_ROUNDS", "1")) * 4000
        for seed in range(6):
            text = f"import test_raw_random; print(test_raw_random.play({seed}, {turns}))"
            done = subprocess.run([sys.executable, "-c", text], capture_output=True, text=True,
                                  cwd=os.path.dirname(os.path.abspath(__file__)), timeout=900)
            self.assertEqual(done.returncode, 0, f"seed {seed}: {done.stderr[-2000:]}")
            self.assertGreater(int(done.stdout), turns // 4)


if __name__ == "__main__":
    unittest.main()
