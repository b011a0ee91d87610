"""Memory has one owner at any time: views and records outlive what they come from, nothing is left behind."""

import gc
import os
import threading
import time
import unittest

import numpy as np
from korvale import raw

import raw_calls
from raw_calls import SQUARE, mesh, nested, system, table, tree

# Keeps its work arrays at every call, as documented.
KEEPS_MEMORY = {"Border"}


def address(array):
    return array.__array_interface__["data"][0]


def resident():
    with open("/proc/self/statm") as sizes:
        return int(sizes.read().split()[1]) * os.sysconf("SC_PAGESIZE")


class ViewsTest(unittest.TestCase):
    def test_records_wrap_arrays_without_copies(self):
        for record, array in ((raw.DATAstruct, SQUARE.copy()), (raw.Data, SQUARE.copy()),
                              (raw.DATAstruct, np.arange(6, dtype=np.int32)), (raw.Data, np.zeros(5, np.uint8))):
            wrapped = record(array)
            view = [wrapped.dvals, wrapped.ivals, wrapped.bvals][wrapped.type]
            self.assertEqual(address(view), address(array))
            self.assertEqual(view.shape, (len(array), array.size // len(array)))

    def test_a_wrapped_array_lives_as_long_as_the_record(self):
        record = raw.DATAstruct(np.arange(30000.0).reshape(-1, 3))
        gc.collect()
        self.assertEqual(record.dvals.sum(), 30000 * 29999 / 2)

    def test_results_are_the_records_own_memory(self):
        output = raw.DATAstruct()
        raw.DATACopy(tree(), output)
        first, second = output.dvals, output.dvals
        self.assertEqual(address(first), address(second))
        raw.DATAReverse(output)
        self.assertEqual(first.tolist(), SQUARE[::-1].tolist())

    def test_a_mix_of_the_same_shape_is_written_in_place(self):
        array = SQUARE.copy()
        for record, mix in ((raw.DATAstruct, raw.DATAMix), (raw.Data, raw.DataMix)):
            array[:] = 0
            self.assertEqual(mix(record(SQUARE.copy()), record(SQUARE.copy()), 1, 1, record(array)), 1)
            self.assertEqual(array.tolist(), (2 * SQUARE).tolist())

    def test_a_view_outlives_its_record(self):
        for record in (table(), tree()):
            view = record.dvals
            del record
            gc.collect()
            self.assertEqual(view.tolist(), SQUARE.tolist())

    def test_a_view_keeps_its_numbers_when_the_record_gets_another_buffer(self):
        larger = np.arange(300.0).reshape(-1, 3)
        changes = {
            "DATACopy": lambda d: raw.DATACopy(tree(larger), d),
            "DATADispose": raw.DATADispose,
            "DATANodeDispose": raw.DATANodeDispose,
            "DATAInitialize": raw.DATAInitialize,
            "DATAAllocate": lambda d: raw.DATAAllocate(raw_calls.sized(d, 50, 3)),
            "DATAReAllocate": lambda d: raw.DATAReAllocate(raw_calls.sized(d, 50, 3)),
            "DATAReAllocate to ints": lambda d: raw.DATAReAllocate(raw_calls.sized(d, 50, 3, raw.DATA_TYPE_INT)),
            "DATACat": lambda d: raw.DATACat(tree(), tree(), d),
            "DATABounds": lambda d: raw.DATABounds(tree(), d),
            "DATAMix": lambda d: raw.DATAMix(tree(larger), tree(larger), 1, 1, d),
            "wrapping": lambda d: setattr(d, "dvals", larger),
            "nothing": lambda d: setattr(d, "dvals", None),
            "slots": lambda d: setattr(d, "pvals", [tree()]),
            "host": lambda d: raw.F3DKorvaleVertex2DATA(raw_calls.Vertices(larger), d),
        }
        for name, change in changes.items():
            for own in (True, False):
                with self.subTest(name, own=own):
                    record = raw.DATAstruct()
                    if own:
                        raw.DATACopy(tree(), record)
                    else:
                        record.dvals = SQUARE.copy()
                    view = record.dvals
                    change(record)
                    churn = [np.ones(12) for _ in range(100)]
                    self.assertEqual(view.tolist(), SQUARE.tolist())
                    del churn

    def test_a_view_of_the_first_generation_keeps_its_numbers(self):
        larger = np.arange(300.0).reshape(-1, 3)
        changes = {
            "DataCopy": lambda d: raw.DataCopy(table(larger), d),
            "DataDispose": raw.DataDispose,
            "DataAllocate": lambda d: raw.DataAllocate(raw_calls.sized(d, 50, 3)),
            "DataBounds": lambda d: raw.DataBounds(table(), d),
            "DataBounds of wider ones": lambda d: raw.DataBounds(table(np.ones((2, 5))), d),
            "DataMix": lambda d: raw.DataMix(table(larger), table(larger), 1, 1, d),
        }
        for name, change in changes.items():
            with self.subTest(name):
                record = raw.Data()
                raw.DataCopy(table(), record)
                view = record.dvals
                change(record)
                churn = [np.ones(12) for _ in range(100)]
                self.assertEqual(view.tolist(), SQUARE.tolist())
                del churn

    def test_a_border_leaves_its_last_output_to_its_views(self):
        status = raw.BORDERStatus()
        status.path = tree()
        views = []
        for step in range(1, 4):
            status.distance = float(step)
            raw.BORDER(status)
            views.append(status.output.dvals)
        self.assertEqual([round(view.min(), 9) for view in views], [-1, -2, -3])

    def test_views_of_a_status_outlive_it(self):
        status = mesh()
        lengths = status.olen.dvals
        raw.PreserveDispose(status)
        es = system()
        values = es.var_vals.dvals
        del es, status
        churn = [np.ones(size) for size in range(1, 200)]
        self.assertEqual(lengths[0, 0], 1)
        self.assertEqual(values[0, 0], np.pi)
        del churn

    def test_views_of_variables_follow_evaluation(self):
        es = system("y = x + 1")
        values = es.var_vals.dvals
        values[2, 0] = 5
        raw.EqEvaluate(es, 0)
        self.assertEqual(values[3, 0], 6)

    def test_a_system_that_grows_leaves_its_values_to_their_views(self):
        es = system()
        values = es.var_vals.dvals
        raw.EqParseVariables(es, " ".join("v" * n for n in range(1, 13)))
        raw.EqSetVariable(es, 0, 3.0)
        self.assertEqual(values[0, 0], np.pi)
        self.assertEqual(es.var_vals.dvals[0, 0], 3.0)


class TreesTest(unittest.TestCase):
    def test_copies_share_their_children(self):
        source, copy = nested(), raw.DATAstruct()
        raw.DATACopy(source, copy)
        self.assertIs(copy.pvals[0], source.pvals[0])
        raw.DATADispose(source)
        self.assertEqual(copy.pvals[1].dvals.tolist(), SQUARE.tolist())

    def test_a_child_outlives_the_array_it_stands_in(self):
        outer = nested()
        child = outer.pvals[0]
        for change in (raw.DATADispose, lambda d: setattr(d, "pvals", [tree()])):
            change(outer)
            self.assertEqual(child.dvals.tolist(), SQUARE.tolist())

    def test_borders_of_a_list_are_kept_and_used_again(self):
        status = raw.BORDERStatus()
        status.path = raw.DATAstruct([tree(), tree(SQUARE[::-1] / 4 + 1)])
        status.distance = 0.25
        self.assertEqual(raw.BORDER(status), 1)
        outer, hole = status.output.pvals
        numbers = outer.dvals
        self.assertEqual((round(numbers.min(), 9), round(hole.dvals[:, 0].min(), 9)), (-0.25, 1.25))
        status.distance = 0.5
        self.assertEqual(raw.BORDER(status), 1)
        self.assertIs(status.output.pvals[0], outer)
        self.assertEqual((round(numbers.min(), 9), round(outer.dvals.min(), 9)), (-0.25, -0.5))

    def test_a_list_that_fails_leaves_the_child_in_the_status(self):
        bad = raw.DATAstruct(np.zeros((3, 2)))
        status = raw.BORDERStatus()
        path = status.path = raw.DATAstruct([tree(), bad])
        self.assertEqual(raw.BORDER(status), -1)
        self.assertIs(status.path, bad)
        self.assertEqual(status.distance, -1)
        del path
        self.assertEqual(raw.BORDER(status), -1)

    def test_long_lists_and_deep_trees_end(self):
        for kind in (raw.data_list_struct, raw.DATAstruct):
            head = kind()
            for _ in range(100000):
                node = kind()
                node.next = head
                head = node
            del head, node
        deep = tree()
        for _ in range(20000):
            outer = raw.DATAstruct()
            outer.pvals = [deep]
            deep = outer
        del deep, outer

    def test_grown_slots_are_empty(self):
        outer = nested()
        outer.count = 50
        self.assertEqual(raw.DATAReAllocate(outer), 1)
        self.assertEqual(outer.pvals[2:], (None,) * 48)


class NothingLeftTest(unittest.TestCase):
    def test_the_resident_size_stays(self):
        rounds = int(os.environ.get("KORVALE_CALLS", "1000"))
        for name, (call, _) in raw_calls.CALLS.items():
            if name in KEEPS_MEMORY | {"find_intersect"}:
                continue
            with self.subTest(name):
                for _ in range(300):
                    call()
                before = resident()
                for _ in range(rounds):
                    call()
                self.assertLess(resident() - before, 400_000)

    def test_lists_that_grow_or_become_an_outline_leave_nothing_behind(self):
        squares = [tree(np.tile(SQUARE, (500, 1))) for _ in range(5)]

        def call():
            status = raw.BORDERStatus()
            status.distance = 0
            for path in (*(raw.DATAstruct(squares[:n]) for n in (1, 2, 5, 3, 5)), squares[0]):
                status.path = path
                self.assertEqual(raw.BORDER(status), 1)

        for _ in range(10):
            call()
        before = resident()
        for _ in range(100):  # what they hold would be 500 kB a time
            call()
        self.assertLess(resident() - before, 400_000)

    def test_errors_leave_nothing_behind(self):
        es = raw.EquationSystem()
        raw.EqAddFuncNoArg(es, "BAD", lambda: 1 / 0)
        raw.EqParseVariables(es, "x")
        raw.EqParseEquation(es, "x = BAD")
        failing = (
            lambda: raw.EqEvaluate(es, 0),
            lambda: raw.DATAReverse(raw_calls.sized(tree(), 50, 3)),
            lambda: raw.DATAstruct(np.ones((2, 2, 2))),
            lambda: raw.DATAstruct([tree(), 1]),
            lambda: raw.norm([1, 2]),
            lambda: raw.F3DKorvaleVertex2DATA(object(), raw.DATAstruct()),
            lambda: raw.EqParseVariables(system(), "a\0"),
        )
        for call in failing:
            with self.subTest(failing.index(call)):
                for turn in range(4000):
                    if turn == 1000:
                        before = resident()
                    with self.assertRaises(Exception):
                        call()
                self.assertLess(resident() - before, 400_000)

    def test_there_are_no_cycles(self):
        gc.collect()
        gc.disable()
        try:
            for name, (call, _) in raw_calls.CALLS.items():
                if name != "find_intersect":
                    call()
                    with self.subTest(name):
                        self.assertEqual(gc.collect(), 0)
        finally:
            gc.enable()


class ThreadsTest(unittest.TestCase):
    def outline(self, corners=1500):
        turn = np.arange(corners) * (2 * np.pi / corners)
        radius = 10 + 4 * np.random.default_rng(5).random(corners)
        status = raw.BORDERStatus()
        status.path = tree(np.column_stack([radius * np.cos(turn), radius * np.sin(turn), 0 * turn]))
        status.distance = -5.0
        return status

    def test_distinct_records_give_the_same_in_threads(self):
        expected = self.outline()
        raw.BORDER(expected)
        statuses = [self.outline() for _ in range(4)]
        workers = [threading.Thread(target=raw.BORDER, args=(status,)) for status in statuses]
        for worker in workers:
            worker.start()
        for worker in workers:
            worker.join()
        for status in statuses:
            np.testing.assert_array_equal(status.output.dvals, expected.output.dvals)

    def test_others_run_meanwhile_and_cannot_touch_the_record(self):
        status = self.outline()
        turns, refused, done = 0, 0, threading.Event()

        def work():
            for _ in range(20):
                raw.BORDER(status)
            done.set()

        worker = threading.Thread(target=work)
        worker.start()
        while not done.is_set():
            turns += 1
            try:
                status.path.dvals
            except RuntimeError:
                refused += 1
            time.sleep(0)
        worker.join()
        self.assertGreater(turns, 100)
        self.assertGreater(refused, 0)
        self.assertEqual(raw.BORDER(status), 1)


if __name__ == "__main__":
    unittest.main()
