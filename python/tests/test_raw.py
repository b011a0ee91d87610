"""Every raw function gives what the library gives; misuse raises."""

import doctest
import subprocess
import sys
import unittest

import numpy as np
from korvale import raw

import raw_calls
from raw_calls import SQUARE, ints, mesh, nested, plain, system, table, tree


class CallsTest(unittest.TestCase):
    def test_each_function_gives_what_the_library_gives(self):
        for name, (call, expected) in raw_calls.CALLS.items():
            if name != "find_intersect":
                with self.subTest(name):
                    self.assertEqual(plain(call()), expected)

    def test_the_example_holds(self):
        self.assertEqual(doctest.testmod(raw), (0, 8))

    def test_lines_meet_and_are_normalised_in_place(self):
        first, second = np.array([0.0, 2, -2]), np.array([-3.0, 0, 6])
        sine, out = raw.find_intersect(first, second)
        self.assertEqual((first.tolist(), second.tolist()), ([0, 1, -1], [-1, 0, 2]))
        self.assertEqual((sine, out.tolist()), (1.0, [2, 1, 0]))

    def test_places_that_are_passed_are_written(self):
        out = np.empty(3)
        self.assertIs(raw.cross_product([1, 0, 0], [0, 1, 0], out), out)
        self.assertEqual(out.tolist(), [0, 0, 1])
        frames = np.empty((4, 4, 4))
        self.assertIs(raw.PATH2xfm(tree(), 1, frames), frames)
        self.assertEqual(frames[:, :3, 3].tolist(), SQUARE.tolist())

    def test_constants_are_the_headers(self):
        self.assertEqual((raw.DATA_TYPE_DATA, raw.EQ_ITEM_TARGET, raw.PRESERVE_AREA), (4, 16, 8))
        self.assertEqual(raw.kStatusFailed, -0x7FFFBFFB)

    def test_the_stages_of_loading(self):
        stages = raw._Initializerkorvale
        self.assertEqual((stages.ref, stages.infunc), (2, 0))
        handle = stages.handle
        self.assertEqual([stages.construct(), stages.destruct(), stages.post_destruct()], [None] * 3)
        self.assertEqual((stages.ref, stages.handle), (2, handle))
        with self.assertRaises(TypeError):
            stages()

    def test_registering_again_gives_another_handle(self):
        text = ("from korvale import raw; before = raw._Initializerkorvale.handle; "
                "raw._Initializerkorvale.pre_construct(); print(raw._Initializerkorvale.handle != before)")
        done = subprocess.run([sys.executable, "-c", text], capture_output=True, text=True, check=True)
        self.assertEqual(done.stdout, "True\n")

    def test_a_bug_check_ends_the_process(self):
        text = "from korvale import raw; raw.MwApplicationBugCheck('gone')"
        done = subprocess.run([sys.executable, "-c", text], capture_output=True, text=True)
        self.assertEqual((done.returncode, done.stderr.split("\n")[0]), (-6, "gone"))


class MisuseTest(unittest.TestCase):
    def refused(self, kind, words, function, *arguments):
        with self.assertRaises(kind) as caught:
            function(*arguments)
        self.assertIn(words, str(caught.exception))

    def test_none_is_no_record(self):
        for function in (raw.DATADispose, raw.DATAReverse, raw.BORDER, raw.Border, raw.EqSystemEvaluate,
                         raw.PreserveFindEnergy, raw.ray_classify, raw.DataListDispose):
            with self.subTest(function.__name__):
                self.refused(TypeError, "None", function, None)

    def test_vectors_have_their_length(self):
        self.refused(ValueError, "norm: v has to be 3 numbers, not of shape (2,)", raw.norm, [1, 2])
        self.refused(TypeError, "norm: v has to be 3 numbers", raw.norm, "word")
        self.refused(ValueError, "out has to hold 3", raw.cross_product, [1, 0, 0], [0, 1, 0], np.empty(2))
        self.refused(TypeError, "float64", raw.cross_product, [1, 0, 0], [0, 1, 0], np.empty(3, np.float32))
        self.refused(TypeError, "float64", raw.normalize, [1, 0, 0])
        self.refused(ValueError, "contiguous", raw.normalize, np.ones(6)[::2])

    def test_sizes_beyond_the_buffer_are_refused(self):
        for record, reverse in ((table(), raw.DataReverse), (tree(), raw.DATAReverse)):
            record.count = 5
            self.refused(ValueError, "count * dim is 15, and the buffer has room for 12", reverse, record)
            self.refused(ValueError, "more than the buffer", lambda: record.dvals)

    def test_sizes_beyond_the_buffer_are_refused_below(self):
        outer = nested()
        outer.pvals[1].dim = 4
        self.refused(ValueError, "count * dim is 16", raw.DATASubReverse, outer)

    def test_addresses_are_not_taken_for_arrays(self):
        addresses = raw.DATAstruct()
        addresses.count, addresses.dim, addresses.type = 2, 1, raw.DATA_TYPE_POINTER
        self.assertEqual(raw.DATAAllocate(addresses), 1)
        addresses.pvals[:] = 1
        addresses.type = raw.DATA_TYPE_DATA
        self.refused(ValueError, "slots hold no arrays", raw.DATASubReverse, addresses)
        self.refused(ValueError, "more than there are slots", lambda: addresses.pvals)

    def test_only_numbers_of_three_kinds_are_wrapped(self):
        for array in (np.ones(3, np.float32), np.ones(3, np.int64), np.ones((2, 2, 2)), np.ones((4, 3))[::2],
                      np.broadcast_to(np.ones(3), (2, 3))):
            with self.assertRaises(ValueError):
                raw.DATAstruct(array)

    def test_arrays_cannot_hold_themselves(self):
        inner = raw.DATAstruct([tree()])
        outer = raw.DATAstruct([inner])
        with self.assertRaises(ValueError):
            inner.pvals = [outer]
        with self.assertRaises(ValueError):
            inner.next = inner
        head, tail = raw.data_list_struct(), raw.data_list_struct()
        head.next = tail
        with self.assertRaises(ValueError):
            tail.next = head

    def test_a_status_keeps_its_sizes(self):
        es = system("y = x")
        with self.assertRaises(ValueError):
            es.var_vals.count = 100
        for function in (raw.DATADispose, raw.DATAAllocate):
            self.refused(ValueError, "part of a status", function, es.var_vals)
        self.refused(ValueError, "part of a status", raw.DATACopy, tree(), es.var_vals)
        self.refused(ValueError, "relies on its elements", raw.DATAReverse, es.func_nargs)
        with self.assertRaises(ValueError):
            es.equations.pvals[0].ivals[0] = 99

    def test_the_arrays_of_a_status_are_not_shared(self):
        es = system("y = x")
        self.refused(ValueError, "belong to a status", raw.DATACopy, es.equations, raw.DATAstruct())
        self.refused(ValueError, "belong to a status", raw.DATACat, es.tables, es.tables, raw.DATAstruct())
        copy = raw.DATAstruct()
        self.assertEqual(raw.DATACopy(es.equations.pvals[0], copy), 1)
        self.assertEqual(copy.ivals[0, 0], raw.EQ_ITEM_TARGET)

    def test_a_disposed_system_is_refused(self):
        es = system("y = x")
        values = es.var_vals
        raw.EqSystemDispose(es)
        self.refused(ValueError, "released", lambda: values.dvals)
        self.refused(ValueError, "EqSystemInitialize", raw.EqEvaluate, es, 0)
        self.assertEqual(raw.EqSystemInitialize(es), 1)
        self.assertEqual(raw.EqReadVariableByName(es, "PI"), np.pi)

    def test_connectivity_that_changed_behind_a_mesh_is_refused(self):
        for field, index in (("face_points", 0), ("edges", 0)):
            status = mesh()
            getattr(status, field).ivals[index] = 100
            self.refused(ValueError, "names a point that does not exist", raw.PreserveFindEnergy, status)
        status = mesh()
        status.face_sizes.ivals[3] = 4
        self.refused(ValueError, "face_sizes has changed", raw.PreserveFindEnergy, status)
        status = mesh()
        status.points.count = 3
        self.refused(ValueError, "points has changed", raw.PreserveFindForce, status)

    def test_a_mesh_that_was_never_taken_over_gives_failures(self):
        status = raw.PreserveStatus()
        self.assertEqual(raw.PreserveCompute(status, tree(), 1), -1)
        self.assertEqual(raw.PreserveSetTag(status, ints([1])), -1)
        self.assertEqual(raw.PreserveFindEnergy(status), 1)
        self.assertEqual(raw.PreservePreserve(status, 1, 1.0), -1)

    def test_cells_stay_as_they_were_classified(self):
        status = raw.RayStatus()
        raw.ray_set_triangles(table(raw_calls.TRIANGLE), status)
        raw.ray_classify(status)
        with self.assertRaises(ValueError):
            status.nx = 100
        raw.ray_declassify(status)
        status.nx = 100
        self.refused(IndexError, "0 cells", status.cell, 0)

    def test_points_are_not_taken_for_triangles(self):
        status = raw.RayStatus()
        raw.ray_set_triangles(table(np.zeros((12, 3))), status)
        self.refused(ValueError, "12 do not fit", raw.ray_classify, status)

    def test_vertices_have_three_numbers(self):
        self.refused(ValueError, "three numbers", raw.F3DKorvaleData2Vertex, table(np.zeros((4, 2))),
                     raw_calls.Vertices(SQUARE))

    def test_a_record_stands_in_one_place_of_a_border(self):
        status = raw.BORDERStatus()
        status.path = tree()
        status.merge = status.dead
        self.refused(ValueError, "several places", raw.BORDER, status)

    def test_texts_hold_no_zero_characters(self):
        self.refused(ValueError, "zero character", raw.EqParseVariables, system(), "a\0b")

    def test_only_handles_that_were_given_out_are_taken(self):
        self.refused(ValueError, "no such handle", raw.MwDllInPostDestruct, 1)


class HostFunctionsTest(unittest.TestCase):
    def test_what_they_raise_comes_out_of_the_call(self):
        es = system()
        raw.EqAddFuncUnary(es, "BAD", lambda a: 1 / 0)
        raw.EqParseEquation(es, "y = BAD x")
        for call in (lambda: raw.EqEvaluate(es, 0), lambda: raw.EqSystemEvaluate(es)):
            with self.assertRaises(ZeroDivisionError):
                call()

    def test_they_may_look_at_their_system_and_not_reshape_it(self):
        es = system()
        raw.EqSetVariableByName(es, "x", 3)
        raw.EqAddFuncNoArg(es, "LOOK", lambda: raw.EqReadVariableByName(es, "x"))
        raw.EqAddFuncNoArg(es, "MEDDLE", lambda: raw.EqParseVariables(es, "z"))
        raw.EqParseEquation(es, "y = LOOK * 2")
        raw.EqParseEquation(es, "y = MEDDLE")
        self.assertEqual(raw.EqEvaluate(es, 0), 6)
        with self.assertRaises(RuntimeError):
            raw.EqEvaluate(es, 1)

    def test_there_are_128_of_a_kind(self):
        es = raw.EquationSystem()
        for i in range(128):
            self.assertEqual(raw.EqAddFuncNoArg(es, "F", lambda: 1.0), 1)
        with self.assertRaises(RuntimeError):
            raw.EqAddFuncNoArg(es, "F", lambda: 1.0)
        raw.EqSystemDispose(es)
        self.assertEqual(raw.EqAddFuncNoArg(system(), "F", lambda: 1.0), 1)

    def test_addresses_are_called_as_they_are(self):
        import ctypes

        host = ctypes.CFUNCTYPE(ctypes.c_double, ctypes.c_double)(lambda a: a + 0.5)
        es = system()
        raw.EqAddFuncUnary(es, "HALF", ctypes.cast(host, ctypes.c_void_p).value)
        raw.EqParseEquation(es, "y = HALF 1")
        self.assertEqual(raw.EqEvaluate(es, 0), 1.5)


class HostCollectionsTest(unittest.TestCase):
    def test_statuses_of_the_host_are_passed_on(self):
        class Refusing(raw_calls.Vertices):
            def GetAccessor(self, zero):
                raise raw.HostError(0x80070005)

        self.assertEqual(raw.F3DKorvaleVertex2DATA(Refusing(SQUARE), raw.DATAstruct()), 0x80070005 - 2**32)

    def test_errors_come_out_of_the_call(self):
        class Broken(raw_calls.Vertices):
            def GetVertexCount(self):
                return "four"

        with self.assertRaises(RuntimeError):
            raw.F3DKorvaleVertex2DATA(Broken(SQUARE), raw.DATAstruct())
        with self.assertRaises(AttributeError):
            raw.F3DKorvaleVertex2DATA(object(), raw.DATAstruct())

    def test_no_collection_is_a_failure(self):
        self.assertEqual(raw.F3DKorvaleVertex2DATA(None, raw.DATAstruct()), raw.kStatusFailed)


if __name__ == "__main__":
    unittest.main()
