// Records of both generations, and operations on whole arrays.
#include <algorithm>
#include <cstdlib>

#include <pybind11/stl.h>

#include "records.h"

namespace korvale::raw {
namespace {

using TableHeld = std::shared_ptr<Table>;
using TreeHeld = std::shared_ptr<Tree>;
using Matrix = double (*)[4];

const char* kind_name(int32_t kind)
{
    constexpr const char* kNames[] = {"double", "int", "byte", "pointer", "data"};
    return kind >= 0 && kind <= DATA_TYPE_DATA ? kNames[kind] : "unknown";
}

/// Takes an array as it is, everything else as numbers.
py::array array_of(const py::object& values)
{
    if (py::isinstance<py::array>(values))
        return values;
    auto array = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(values);
    if (!array) {
        PyErr_Clear();
        throw py::type_error("an array of numbers is wanted");
    }
    return array;
}

// --- The classes -----------------------------------------------------------------------------------------------------

/// What the records of both generations have.
template <class Class>
void add_fields(Class& type)
{
    using Object = typename Class::type;
    const auto size = [](auto field) {
        return std::pair([field](const Object& o) { return o.live().*field; },
                         [field](Object& o, int32_t value) {
                             if (o.is_part)
                                 throw py::value_error("this record is part of a status, to which its sizes belong");
                             o.live().*field = value;
                         });
    };
    const auto dim = size(&std::remove_reference_t<decltype(std::declval<Object>().live())>::dim);
    const auto count = size(&std::remove_reference_t<decltype(std::declval<Object>().live())>::count);
    const auto kind = size(&std::remove_reference_t<decltype(std::declval<Object>().live())>::type);
    type.def_property("dim", dim.first, dim.second, "Components per element; -1 when unset.")
        .def_property("count", count.first, count.second, "Elements; -1 when unset.")
        .def_property("type", kind.first, kind.second, "The kind of the elements, one of DATA_TYPE_...");
    const char* const names[] = {"dvals", "ivals", "bvals"};
    const char* const texts[] = {"The buffer of kind double as an array [count][dim] of float64, or None.",
                                 "The buffer of kind int as an array [count][dim] of int32, or None.",
                                 "The buffer of kind byte as an array [count][dim] of uint8, or None."};
    for (int number = 0; number < kSlots; ++number)
        type.def_property(
            names[number], [number](Object& o) { return o.view(number); },
            [number](Object& o, const py::object& array) {
                o.live();
                if (!array.is_none())
                    o.wrap(array_of(array));
                else if (o.is_part)
                    throw py::value_error("this record is part of a status, which owns its buffer");
                else
                    o.leave(number);
            },
            texts[number]);
    type.def("__len__", [](const Object& o) { return std::max(o.live().count, 0); });
    type.def("__repr__", [](const py::object& self) {
        const auto& o = self.cast<const Object&>();
        const std::string name = py::type::of(self).attr("__name__").cast<std::string>();
        if (o.record == nullptr)
            return "<" + name + " of a status that has been released>";
        return name + "(count=" + std::to_string(o.record->count) + ", dim=" + std::to_string(o.record->dim) +
               ", type=" + kind_name(o.record->type) + ")";
    });
}

TreeHeld tree_of(const py::object& values)
{
    TreeHeld tree = Tree::make();
    if (values.is_none())
        return tree;
    if (py::isinstance<py::list>(values) || py::isinstance<py::tuple>(values)) {
        const py::sequence given = values;
        if (given.size() != 0 && (py::isinstance<Tree>(given[0]) || given[0].is_none())) {
            Tree::fill(tree, given.cast<std::vector<TreeHeld>>());
            return tree;
        }
    }
    tree->wrap(array_of(values));
    return tree;
}

template <class Object>
std::shared_ptr<Object> table_of(const py::object& values)
{
    std::shared_ptr<Object> table = Object::make();
    if (!values.is_none())
        table->wrap(array_of(values));
    return table;
}

// --- First generation ------------------------------------------------------------------------------------------------

/// Calls the library for an output of the first generation whose buffer it may replace without releasing it.
template <class Work>
int with_old_buffers(Data& record, Work&& work)
{
    const std::array<void*, kSlots> before = {record.dvals, record.ivals, record.bvals};
    const int result = work();
    for (int number = 0; number < kSlots; ++number)
        if (before[number] != nullptr && buffer_at(record, number) != before[number])
            std::free(before[number]);
    return result;
}

void add_first_generation(py::module_& m)
{
    m.def(
        "DataInitialize",
        [](const TableHeld& d) {
            Call call("DataInitialize");
            DataInitialize(call.empty(d, "d"));
        },
        py::arg("d"), described("DataInitialize"));
    m.def(
        "DataListInitialize",
        [](const std::shared_ptr<ListNode>& node) {
            Call call("DataListInitialize");
            call.empty(node, "node");
            DataListInitialize(static_cast<data_list_struct*>(node->record));
            node->following.reset();
        },
        py::arg("node"), described("DataListInitialize"));
    m.def(
        "DataNew", [] { return Table::make(); }, described("DataNew"));
    m.def(
        "DataListNew", [] { return ListNode::make(); }, described("DataListNew"));
    m.def(
        "DataAllocate",
        [](const TableHeld& d) {
            Call call("DataAllocate");
            Data* const record = call.remake(d, "d");
            return with_old_buffers(*record, [&] { return DataAllocate(record); });
        },
        py::arg("d"), described("DataAllocate"));
    m.def(
        "DataDispose",
        [](const TableHeld& d) {
            Call call("DataDispose");
            DataDispose(call.empty(d, "d"));
        },
        py::arg("d"), described("DataDispose"));
    m.def(
        "DataListDispose",
        [](const std::shared_ptr<ListNode>& head) {
            Call call("DataListDispose");
            // Every node is emptied, and none freed: each belongs to its object.
            std::shared_ptr<ListNode> node = head;
            do {
                call.empty(node, "head");
                std::shared_ptr<ListNode> next = std::move(node->following);
                auto* const record = static_cast<data_list_struct*>(node->record);
                record->next = nullptr;
                DataListDispose(record);
                node = std::move(next);
            } while (node != nullptr);
        },
        py::arg("head"), described("DataListDispose"));
    m.def(
        "DataReverse",
        [](const TableHeld& d) {
            Call call("DataReverse");
            Data* const record = call.write(d, "d");
            call.run([=] { DataReverse(record); });
        },
        py::arg("d"), described("DataReverse"));
}

// --- Second generation -----------------------------------------------------------------------------------------------

template <class Result>
void def_question(py::module_& m, const char* name, Result (*function)(DATAstruct*), const char* argument)
{
    m.def(
        name,
        [name, function, argument](const TreeHeld& d) {
            Call call(name);
            return function(call.read_optional(d, argument));
        },
        py::arg(argument), described(name));
}

void add_second_generation(py::module_& m)
{
    m.def(
        "DATAInitialize",
        [](const TreeHeld& d) {
            Call call("DATAInitialize");
            DATAInitialize(call.empty(d, "d"));
        },
        py::arg("d"), described("DATAInitialize"));
    m.def(
        "DATANew", [] { return Tree::make(); }, described("DATANew"));
    m.def(
        "DATAAllocate",
        [](const TreeHeld& d) {
            Call call("DATAAllocate");
            DATAstruct* const record = call.remake(d, "d");
            return call.run([=] { return DATAAllocate(record); });
        },
        py::arg("d"), described("DATAAllocate"));
    m.def(
        "DATAReAllocate",
        [](const TreeHeld& d) {
            Call call("DATAReAllocate");
            DATAstruct* const record = call.remake(d, "d");
            return call.run([&] {
                const size_t before = d->slot_count();
                const int result = DATAReAllocate(record);
                if (const size_t now = d->slot_count();
                    now > before) // the library does not clear slots that are gained
                    std::fill(record->pvals + before, record->pvals + now, nullptr);
                return result;
            });
        },
        py::arg("d"), described("DATAReAllocate"));
    m.def(
        "DATANodeDispose",
        [](const TreeHeld& d) {
            Call call("DATANodeDispose");
            DATANodeDispose(call.empty(d, "d"));
        },
        py::arg("d"), described("DATANodeDispose"));
    m.def(
        "DATADispose",
        [](const TreeHeld& d) {
            Call call("DATADispose");
            return DATADispose(call.empty(d, "d"));
        },
        py::arg("d"), described("DATADispose"));
    m.def(
        "DATAListToDATA",
        [](const TreeHeld& first) -> TreeHeld {
            Call call("DATAListToDATA");
            if (first == nullptr)
                return nullptr;
            if (first->is_part)
                call.refuse("first is part of a status and stands in no slot");
            return Tree::of(DATAListToDATA(call.read(first, "first")));
        },
        py::arg("first"), described("DATAListToDATA"));
    def_question(m, "DATAListCount", DATAListCount, "first");
    def_question(m, "DATACheckIfPoints", DATACheckIfPoints, "d");
    def_question(m, "DATACheckIfFace", DATACheckIfFace, "d");
    def_question(m, "DATACheckIfPatch", DATACheckIfPatch, "d");
    def_question(m, "DATACheckIfMesh", DATACheckIfMesh, "d");
    for (const auto& [name, function] :
         {std::pair("DATAReverse", &DATAReverse), std::pair("DATASubReverse", &DATASubReverse)})
        m.def(
            name,
            [name = name, function = function](const TreeHeld& d) {
                Call call(name);
                DATAstruct* const record = call.write(d, "d");
                call.run([=] { function(record); });
            },
            py::arg("d"), described(name));
}

// --- Operations ------------------------------------------------------------------------------------------------------

/// The output of a mix: written in place where it has the shape and kind of `like`, else made anew.
template <class Object>
auto* output_like(Call& call, const std::shared_ptr<Object>& output, const Object& like)
{
    if (output == nullptr || output->record == nullptr)
        return call.write(output, "output");
    const auto& a = *like.record;
    const auto& o = *output->record;
    const int number = buffer_number(a.type);
    if (o.type == a.type && o.count == a.count && o.dim == a.dim && number < kSlots && buffer_at(o, number) != nullptr)
        return call.write(output, "output");
    auto* const shaped = call.shape(output, "output");
    if constexpr (std::is_same_v<Object, Tree>)
        output->part_company(); // the library disposes such an output, with all that hangs on it
    return shaped;
}

/// Raises for arrays that are part of a status: a copy would share them.
void refuse_parts(const Call&, const Table&)
{
}

void refuse_parts(const Call& call, const Tree& source)
{
    if (source.is_part && source.record != nullptr && source.record->type == DATA_TYPE_DATA)
        call.refuse("the arrays in the slots belong to a status and cannot be shared: copy one by one");
}

template <class Object, class R>
void def_operations(py::module_& m, const char* cat_name, int (*cat)(R*, R*, R*), const char* copy_name,
                    int (*copy)(R*, R*), const char* box_name, int (*box_around)(R*, R*), const char* xfm_name,
                    void (*transform)(Matrix, R*, R*))
{
    using Held = std::shared_ptr<Object>;
    m.def(
        cat_name,
        [=](const Held& first, const Held& second, const Held& output) {
            Call call(cat_name);
            R *const a = call.read(first, "first"), *const b = call.read(second, "second");
            refuse_parts(call, *first);
            refuse_parts(call, *second);
            R* const o = call.shape(output, "output");
            return call.run([=] { return cat(a, b, o); });
        },
        py::arg("first"), py::arg("second"), py::arg("output"), described(cat_name));
    m.def(
        copy_name,
        [=](const Held& source, const Held& output) {
            Call call(copy_name);
            R* const s = call.read(source, "source");
            refuse_parts(call, *source);
            R* const o = call.shape(output, "output");
            return call.run([=] { return copy(s, o); });
        },
        py::arg("source"), py::arg("output"), described(copy_name));
    m.def(
        box_name,
        [=](const Held& src, const Held& box) {
            Call call(box_name);
            R *const s = call.read(src, "src"), *const b = call.write(box, "box");
            return call.run([=] { return box_around(s, b); });
        },
        py::arg("src"), py::arg("box"), described(box_name));
    m.def(
        xfm_name,
        [=](const py::object& by, const Held& source, const Held& output) {
            Call call(xfm_name);
            const py::array_t<double> given = numbers(by, 16, xfm_name, "m");
            auto* const matrix = reinterpret_cast<Matrix>(const_cast<double*>(given.data())); // read only
            R *const s = call.read(source, "source"), *const o = call.write(output, "output");
            call.run([=] { transform(matrix, s, o); });
        },
        py::arg("m"), py::arg("source"), py::arg("output"), described(xfm_name));
}

template <class Object, class R>
void def_mixes(py::module_& m, const char* name, int (*mix)(R*, R*, double, double, R*), const char* four_name,
               int (*mix_four)(R*, R*, R*, R*, double, double, double, double, R*))
{
    using Held = std::shared_ptr<Object>;
    m.def(
        name,
        [=](const Held& a, const Held& b, double wa, double wb, const Held& output) {
            Call call(name);
            R *const first = call.read(a, "a"), *const second = call.read(b, "b");
            R* const o = output_like(call, output, *a);
            return call.run([=] { return mix(first, second, wa, wb, o); });
        },
        py::arg("a"), py::arg("b"), py::arg("wa"), py::arg("wb"), py::arg("output"), described(name));
    m.def(
        four_name,
        [=](const Held& a, const Held& b, const Held& c, const Held& d, double wa, double wb, double wc, double wd,
            const Held& output) {
            Call call(four_name);
            R *const first = call.read(a, "a"), *const second = call.read(b, "b");
            R *const third = call.read(c, "c"), *const fourth = call.read(d, "d");
            R* const o = output_like(call, output, *a);
            return call.run([=] { return mix_four(first, second, third, fourth, wa, wb, wc, wd, o); });
        },
        py::arg("a"), py::arg("b"), py::arg("c"), py::arg("d"), py::arg("wa"), py::arg("wb"), py::arg("wc"),
        py::arg("wd"), py::arg("output"), described(four_name));
}

void add_bounds(py::module_& m)
{
    m.def(
        "DataBounds",
        [](const TableHeld& source, const TableHeld& output) {
            Call call("DataBounds");
            Data *const s = call.read(source, "source"), *const o = call.shape(output, "output");
            // The library releases an output that is narrower, shorter or of another kind itself.
            if (s->dim > o->dim || o->count < 2 || s->type != o->type)
                return call.run([=] { return DataBounds(s, o); });
            return call.run([=] { return with_old_buffers(*o, [=] { return DataBounds(s, o); }); });
        },
        py::arg("source"), py::arg("output"), described("DataBounds"));
    m.def(
        "DATABounds",
        [](const TreeHeld& source, const TreeHeld& output) {
            Call call("DATABounds");
            DATAstruct *const s = call.read(source, "source"), *const o = call.shape(output, "output");
            return call.run([=] { return DATABounds(s, o); });
        },
        py::arg("source"), py::arg("output"), described("DATABounds"));
}

template <class Object, class R>
void def_sample(py::module_& m, const char* name, void (*sample)(R*, unsigned, R*, R*, R*))
{
    using Held = std::shared_ptr<Object>;
    m.def(
        name,
        [=](const Held& triangles, unsigned seed, const Held& points, const Held& vertex_attributes,
            const Held& point_attributes) {
            Call call(name);
            R *const t = call.read(triangles, "triangles"), *const p = call.write(points, "points");
            R* const va = call.read_optional(vertex_attributes, "vertex_attributes");
            R* const pa = call.write_optional(point_attributes, "point_attributes");
            call.run([=] { sample(t, seed, p, va, pa); });
        },
        py::arg("triangles"), py::arg("seed"), py::arg("points"), py::arg("vertex_attributes") = py::none(),
        py::arg("point_attributes") = py::none(), described(name));
}

} // namespace

void add_records(py::module_& m)
{
    py::class_<Whole, std::shared_ptr<Whole>>(m, "_Status", "What all statuses are.");

    py::class_<Table, TableHeld> data(m, "Data", described("Data"));
    data.def(py::init(&table_of<Table>), py::arg("values") = py::none());
    add_fields(data);

    py::class_<ListNode, Table, std::shared_ptr<ListNode>> node(m, "data_list_struct", described("data_list_struct"));
    node.def(py::init(&table_of<ListNode>), py::arg("values") = py::none())
        .def_property(
            "next", [](const ListNode& n) { return n.following; }, &ListNode::link, "The following node, or None.");

    py::class_<Tree, TreeHeld> datastruct(m, "DATAstruct", described("DATAstruct"));
    datastruct.def(py::init(&tree_of), py::arg("values") = py::none());
    add_fields(datastruct);
    datastruct
        .def_property_readonly(
            "alloc_dim", [](const Tree& d) { return d.live().alloc_dim; },
            "The dim that the buffer was allocated for; -1 when none.")
        .def_property_readonly(
            "alloc_count", [](const Tree& d) { return d.live().alloc_count; },
            "The count that the buffer was allocated for; -1 when none.")
        .def_property_readonly(
            "alloc_type", [](const Tree& d) { return d.live().alloc_type; }, "The kind of the buffer.")
        .def_property("pvals", &Tree::slots, &Tree::fill,
                      "The arrays in the slots, as a tuple with None for an empty slot, when the kind is "
                      "DATA_TYPE_DATA; the addresses as an array [count][dim] when it is DATA_TYPE_POINTER; or None. "
                      "Assign a sequence of records to make this an array of them.")
        .def_property(
            "next", [](const Tree& d) { return d.following; }, &Tree::link, "The following record of a list, or None.");
}

void add_arrays(py::module_& m)
{
    add_first_generation(m);
    add_second_generation(m);
    def_operations<Table>(m, "DataCat", DataCat, "DataCopy", DataCopy, "DataBBox", DataBBox, "TransformData",
                          TransformData);
    def_operations<Tree>(m, "DATACat", DATACat, "DATACopy", DATACopy, "DATABBox", DATABBox, "TransformDATA",
                         TransformDATA);
    def_mixes<Table>(m, "DataMix", DataMix, "Data4Mix", Data4Mix);
    def_mixes<Tree>(m, "DATAMix", DATAMix, "DATA4Mix", DATA4Mix);
    add_bounds(m);
    def_sample<Table>(m, "DataTriSample", DataTriSample);
    def_sample<Tree>(m, "DATATriSample", DATATriSample);
}

} // namespace korvale::raw
