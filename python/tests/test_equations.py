"""Tests of equations as text."""

import copy
import gc
import math
import pickle
import re
import unittest
import weakref

import korvale
import numpy
from test_shapes import RefusingTest


def doubled(x):
    return 2 * x


class EquationsTest(RefusingTest):
    def setUp(self):
        self.equations = korvale.Equations("y x a")
        self.equations.add("y = a * x + 1")

    def test_variables_are_items(self):
        self.equations["x"] = 2
        self.assertEqual(self.equations["x"], 2)
        self.assertEqual(list(self.equations), ["PI", "E", "y", "x", "a"])
        self.assertIn("x", self.equations)
        self.assertNotIn("z", self.equations)
        self.assertEqual(len(self.equations), 1)
        self.assertEqual(len(korvale.Equations("y x")), 0)
        self.assertTrue(korvale.Equations("y x"))
        self.assertEqual(self.equations.variables["PI"], math.pi)
        with self.assertRaises(KeyError):
            self.equations["z"]
        with self.assertRaises(KeyError):
            self.equations["z"] = 1

    def test_evaluates_once(self):
        self.equations["a"] = 3
        self.assertEqual(self.equations.evaluate(0, x=2), 7)
        self.assertEqual(self.equations["y"], 7)

    def test_evaluates_columns_of_any_shape(self):
        x = numpy.arange(12.0).reshape(3, 4)
        self.assertEqual(self.equations.evaluate(0, {"x": x}, a=2).tolist(), (2 * x + 1).tolist())
        self.assertEqual(self.equations.evaluate(0, x=[1, 2], a=[3, 4]).tolist(), [4, 9])
        self.assertEqual(self.equations["x"], 2)
        self.assertEqual(self.equations.evaluate(0, x=[]).tolist(), [])
        self.assertEqual(self.equations.evaluate(0, x=range(3), a=numpy.float32(2)).tolist(), [1, 3, 5])

    def test_gives_what_single_evaluations_give(self):
        noise = korvale.Equations("y x z")
        noise.add("y = SIN(x * 7) ^ 3 / (z + SQRT(x)) - x ANGLE z")
        generator = numpy.random.default_rng(3)
        x, z = generator.uniform(0, 4, 1000), generator.uniform(0, 4, 1000)
        column = noise.evaluate(x=x, z=z)
        for i in range(1000):
            self.assertEqual(noise.evaluate(x=x[i], z=z[i]), column[i])

    def test_writes_where_it_is_told_to(self):
        out = numpy.empty(3)
        self.assertIs(self.equations.evaluate(0, x=[1, 2, 3], a=1, out=out), out)
        self.assertEqual(out.tolist(), [2, 3, 4])

    def test_evaluates_all_in_order(self):
        both = korvale.Equations("b c a")
        self.assertEqual([both.add("b = a + 1"), both.add("c = b * b")], [0, 1])
        self.assertEqual(both.evaluate_all("c", a=4), {"c": 25})
        result = both.evaluate_all("b, c", a=[1, 2])
        self.assertEqual({name: column.tolist() for name, column in result.items()}, {"b": [2, 3], "c": [4, 9]})
        reserved = korvale.Equations()
        reserved.declare("a b", reserved=True)
        reserved.add("a = b + 1")
        reserved.add("b = a + 1")
        self.assertEqual(reserved.evaluate_all(["a", "b"]), {"a": 1, "b": 1})

    def test_calls_python_functions(self):
        hosted = korvale.Equations("y x")
        hosted.function("TWICE", doubled)
        hosted.function("HYPO", math.hypot, arguments=2)
        hosted.function("FIVE", lambda: 5)
        hosted.add("y = TWICE(x) + (3 HYPO 4) + FIVE")
        x = numpy.arange(1000.0)
        self.assertEqual(hosted.evaluate(x=x).tolist(), (2 * x + 10).tolist())

    def test_passes_on_what_functions_raise(self):
        calls = []

        def fail(x):
            calls.append(x)
            raise RuntimeError("no")

        hosted = korvale.Equations("y x")
        hosted.function("FAIL", fail)
        hosted.function("WORD", lambda x: "word")
        hosted.add("y = FAIL(x)")
        hosted.add("y = WORD(x)")
        with self.assertRaisesRegex(RuntimeError, "no"):
            hosted.evaluate(0, x=numpy.arange(500.0))
        self.assertEqual(calls, [0])
        with self.assertRaisesRegex(korvale.Error, "the result of a function must be a number, but it is 'word'"):
            hosted.evaluate(1)
        hosted.add("y = x + 1")
        self.assertEqual(hosted.evaluate(2, x=1), 2)

    def test_functions_may_evaluate_other_systems_but_not_their_own(self):
        inner, outer = korvale.Equations("y x"), korvale.Equations("y x")
        inner.function("TWICE", doubled)
        inner.add("y = TWICE(x) + 1")
        outer.function("INNER", lambda x: inner.evaluate(x=x))
        outer.function("AGAIN", lambda x: outer.evaluate(1, x=x))
        outer.add("y = INNER(x) * 10")
        outer.add("y = AGAIN(x)")
        self.assertEqual(outer.evaluate(x=[1, 2]).tolist(), [30, 50])
        with self.assertRaisesRegex(korvale.Error, "the object must be free"):
            outer.evaluate(1)

    def test_cycles_through_functions_are_collected(self):
        equations = korvale.Equations("y x")
        equations.function("SELF", lambda x: len(equations))
        watch = weakref.ref(equations)
        del equations
        gc.collect()
        self.assertIsNone(watch())

    def test_has_room_for_64_functions_of_a_kind(self):
        hosted = korvale.Equations("y x")
        letters = "ABCDEFGHIJ"
        names = [f"F{letters[k // 10]}{letters[k % 10]}" for k in range(65)]
        for k, name in enumerate(names[:64]):
            hosted.function(name, lambda x, k=k: k)
        with self.assertRaisesRegex(korvale.Error, "64 functions"):
            hosted.function(names[64], doubled)
        hosted.add(f"y = {names[63]}(x)")
        self.assertEqual(hosted.evaluate(), 63)

    def test_tables_keep_noise(self):
        noise = korvale.Equations("y")
        noise.add("y = RAND")
        self.assertEqual(noise.table("RAND").shape, (0, 0))
        noise.make_table("RAND", 4)
        table = noise.table("RAND")
        self.assertEqual(table.shape, (4, 1))
        noise.table_position = 2
        self.assertEqual(noise.evaluate(), table[2, 0])
        noise.table_position = 0.5
        self.assertAlmostEqual(noise.evaluate(), (table[0, 0] + table[1, 0]) / 2, places=15)
        noise.fill_table("RAND", [[1], [2], [3], [4]])
        noise.table_position = 3
        self.assertEqual(noise.evaluate(), 4)
        self.assertRefuses("Equations.fill_table: values must have the shape of the table, (4, 1), but its shape is "
                           "(2, 2)", lambda: noise.fill_table("RAND", numpy.zeros((2, 2))))
        noise.add("y = RAND + RAND")
        self.assertEqual(noise.table("RAND").shape, (4, 1))

    def test_copies_and_pickles(self):
        system = korvale.Equations("y x")
        system.declare("r", reserved=True)
        system.function("TWICE", doubled)
        system.add("y = TWICE(x) + RAND + SIN(1)")
        system.add("r = RAND * x")
        system.simplify()
        system.make_table("RAND", 5)
        system.add("y = RAND")
        system["x"], system.table_position = 3.25, 1.5
        system.evaluate_all()
        for duplicate in (copy.copy, copy.deepcopy, lambda value: pickle.loads(pickle.dumps(value))):
            twin = duplicate(system)
            self.assertEqual(twin, system)
            self.assertEqual(twin.evaluate_all("y r"), duplicate(system).evaluate_all("y r"))
            self.assertEqual(twin["r"], copy.copy(system).evaluate_all("r")["r"])
        korvale_draws = numpy.array([copy.copy(system).evaluate(0) for _ in range(2)])
        self.assertEqual(korvale_draws[0], korvale_draws[1])
        self.assertNotEqual(system, korvale.Equations("y x"))

    def test_repeats_with_a_seed_of_its_own(self):
        noise = korvale.Equations("y")
        noise.add("y = RAND + GAUSS")
        noise.seed(5)
        twin = copy.copy(noise)
        first = [noise.evaluate(), noise.evaluate()]
        later = copy.copy(noise)
        korvale.seed(3)
        self.assertEqual([twin.evaluate(), twin.evaluate()], first)
        self.assertEqual(later.evaluate(), noise.evaluate())
        self.assertRefuses("Equations.seed: seed must be 0 to 4294967295, but it is -1", lambda: noise.seed(-1))

    def test_tells_whether_it_ran_in_blocks(self):
        self.equations.evaluate(x=numpy.arange(1000.0))
        self.assertTrue(self.equations.ran_in_blocks)
        self.equations.add("y = y + x")
        sums = self.equations.evaluate(1, x=numpy.arange(5.0), y=0)
        self.assertFalse(self.equations.ran_in_blocks)
        self.assertEqual(sums.tolist(), [0, 1, 3, 6, 10])

    def test_shows_itself(self):
        self.assertEqual(repr(self.equations), "<korvale.Equations('y x a'): y = a * x + 1>")
        self.assertEqual(self.equations.equations, ["y = a * x + 1"])

    def test_says_which_word_is_refused_and_where(self):
        with self.assertRaises(korvale.EquationError) as caught:
            self.equations.add("y = SIN(x) / (x + frequency)")
        self.assertEqual((caught.exception.word, caught.exception.place), ("frequency", 18))
        self.assertEqual(str(caught.exception), 'Equations.add: equation must be readable, but "y = SIN(x) / (x + '
                         'frequency)" is refused at character 19: "frequency" is neither a variable nor a function')
        twin = pickle.loads(pickle.dumps(caught.exception))
        self.assertEqual((twin.word, twin.place, str(twin)), ("frequency", 18, str(caught.exception)))
        for text, place, word, told in [
                ("y = \N{GREEK SMALL LETTER ALPHA} x", 4, "\N{GREEK SMALL LETTER ALPHA}", "which are ASCII"),
                ("y = x\N{SUPERSCRIPT TWO}", 5, "\N{SUPERSCRIPT TWO}", "write ^ 2"),
                ("y\N{LATIN SMALL LETTER E WITH ACUTE}\N{GRINNING FACE} = x", 0,
                 "y\N{LATIN SMALL LETTER E WITH ACUTE}\N{GRINNING FACE}", "is not a variable"),
                ("y \N{GRINNING FACE} = x", 2, "\N{GRINNING FACE}", 'only a variable stands before the "="'),
                ("y = x + \N{NO-BREAK SPACE}a", 8, "\N{NO-BREAK SPACE}", "write a plain space"),
                ("\N{GRINNING FACE}\N{GRINNING FACE}", 2, "", 'there is no "="')]:
            with self.subTest(text):
                with self.assertRaises(korvale.EquationError) as caught:
                    self.equations.add(text)
                self.assertEqual((caught.exception.word, caught.exception.place), (word, place))
                self.assertIn(f'"{text}" is refused at character {place + 1}: ', str(caught.exception))
                self.assertTrue(str(caught.exception).endswith(told))
        with self.assertRaises(korvale.EquationError):
            self.equations.add("y = \udc80")
        for text, told in [("1e-3", "write 0.001"), ("2x", "write 2 * x"), ("x ** 2", "write ^"),
                           ("sin(x)", "write SIN, capitals count"), ("x = 1", "it stands once")]:
            with self.assertRaisesRegex(korvale.EquationError, re.escape(told)):
                self.equations.add(f"y = {text}")
        self.assertEqual(self.equations.equations, ["y = a * x + 1"])

    def test_quotes_and_counts_what_was_written(self):
        for text, place, message in [
                ("sin(x)", 0, '"sin(x)" is refused at character 1: "sin" is neither a variable nor a function: '
                              "write SIN, capitals count"),
                ("MAX(x, 2)", 0, '"MAX(x, 2)" is refused at character 1: "MAX" is neither a variable nor a function: '
                                 "write (a + b + SQRT((a - b) * (a - b))) / 2"),
                ("x * (2", 4, '"x * (2" is refused at character 5: the parenthesis is not closed'),
                ("x * ", 4, '"x * " is refused at character 5: an operand is missing after "*"'),
                ("x * é", 4, '"x * é" is refused at character 5: "é" is no character of equations, which '
                                  "are ASCII"),
                ("", 0, '"" is refused at character 1: there is nothing in it')]:
            with self.subTest(text), self.assertRaises(korvale.EquationError) as raised:
                korvale.evaluate(text, x=1)
            error = raised.exception
            self.assertEqual(str(error), f"evaluate: expression must be readable, but {message}")
            self.assertEqual((error.function, error.argument, error.place), ("evaluate", "expression", place))
        with self.assertRaises(korvale.EquationError) as raised:
            korvale.evaluate("x + " * 500 + "two" + " + x" * 500, x=1)
        self.assertEqual(raised.exception.place, 2000)
        self.assertRegex(str(raised.exception),
                         '"[.]{3}[x+ ]* two [x+ ]*[.]{3}" is refused at character 2001: "two" is')
        self.assertLess(len(str(raised.exception)), 600)

    def test_says_what_it_refuses(self):
        self.assertRefuses('Equations.declare: names must be no functions\', but "SIN" is one',
                           lambda: self.equations.declare("SIN"))
        self.assertRefuses('evaluate: expression must be readable, but "y = x" is refused at character 3: an '
                           'expression is what stands behind the "=" of an equation: write that alone',
                           lambda: korvale.evaluate("y = x", x=2))
        self.assertRefuses('evaluate: expression must be readable, but "x == 2" is refused at character 3: there are '
                           'no comparisons', lambda: korvale.evaluate("x == 2", x=2))
        self.assertRefuses("Equations.evaluate: equation must be the number of one of 1 equations, but it is 1",
                           lambda: self.equations.evaluate(1))
        self.assertRefuses("Equations.evaluate: equation must be the number of an equation, but there is none yet",
                           lambda: korvale.Equations().evaluate())
        self.assertRefuses('Equations.evaluate: columns must name variables, but "z" is none',
                           lambda: self.equations.evaluate(z=1))
        self.assertRefuses('Equations.evaluate: a must have the shape of the others, (2,), but its shape is '
                           "(3,)", lambda: self.equations.evaluate(x=[1, 2], a=[1, 2, 3]))
        self.assertRefuses("Equations.evaluate: x must be numbers, but it holds text",
                           lambda: self.equations.evaluate(x=["one", "two"]))
        self.assertRefuses('Equations.function: name must be new, but "SIN" is a function or a variable',
                           lambda: self.equations.function("SIN", doubled))
        self.assertRefuses("Equations.function: callable must take no, one or two numbers, but it takes 3",
                           lambda: self.equations.function("MANY", lambda a, b, c: 0))

    def test_evaluates_expressions(self):
        x = numpy.linspace(0, 1, 5)
        self.assertEqual(korvale.evaluate("x * 2 + k", x=x, k=1).tolist(), (x * 2 + 1).tolist())
        self.assertEqual(korvale.evaluate("2 ^ 3"), 8)
        self.assertEqual(korvale.evaluate("result + 1", result=2), 3)

    def test_tells_of_progress(self):
        told = []
        x = numpy.arange(150000.0)
        y = self.equations.evaluate(0, x=x, a=2, progress=told.append)
        self.assertEqual(told, [50000, 100000, 150000])
        numpy.testing.assert_array_equal(y, 2 * x + 1)


if __name__ == "__main__":
    unittest.main()
