// The classes `Data`, `data_list_struct` and `DATAstruct` as Python sees them.
#include <algorithm>

#include <pybind11/stl.h>

#include "bind.h"

namespace korvale::raw {
namespace {

using TreeHeld = std::shared_ptr<Tree>;

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

/// What the records of both generations have.
template <class Class>
void add_fields(Class& type)
{
    using Object = typename Class::type;
    using R = std::remove_reference_t<decltype(std::declval<Object>().live())>;
    const auto def_size = [&type](const char* name, int32_t R::*field, const char* text) {
        type.def_property(
            name, [field](const Object& o) { return o.live().*field; },
            [field](Object& o, int32_t value) {
                if (o.is_part)
                    throw py::value_error("this record is part of a status, to which its sizes belong");
                o.live().*field = value;
            },
            text);
    };
    def_size(FIELD(R, dim), "Components per element; -1 when unset.");
    def_size(FIELD(R, count), "Elements; -1 when unset.");
    def_size(FIELD(R, type), "The kind of the elements, one of DATA_TYPE_...");
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

} // namespace

void add_records(py::module_& m)
{
    py::class_<Whole, std::shared_ptr<Whole>>(m, "_Status", "What all statuses are.");

    py::class_<Table, std::shared_ptr<Table>> data(m, "Data", described("Data"));
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

} // namespace korvale::raw
