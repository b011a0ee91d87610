// Records of both generations, and operations on whole arrays.
#include <algorithm>
#include <cstdlib>

#include <pybind11/stl.h>

#include "bind.h"

namespace korvale::raw {
namespace {

using TableHeld = std::shared_ptr<Table>;
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

// --- The classes -----------------------------------------------------------------------------------------------------

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

int allocate(Data* d)
{
    return with_old_buffers(*d, [d] { return DataAllocate(d); });
}

void initialize_node(ListNode& node)
{
    DataListInitialize(static_cast<data_list_struct*>(node.record));
    node.following.reset();
}

/// Empties every node and frees none: each belongs to its object.
void dispose_list(Call& call, const std::shared_ptr<ListNode>& head)
{
    std::shared_ptr<ListNode> node = head;
    do {
        call.take(node, "head", Use::empty);
        std::shared_ptr<ListNode> next = std::move(node->following);
        auto* const record = static_cast<data_list_struct*>(node->record);
        record->next = nullptr;
        DataListDispose(record);
        node = std::move(next);
    } while (node != nullptr);
}

void add_first_generation(py::module_& m)
{
    def(m, NAMED(DataInitialize), empty("d"));
    def(m, "DataListInitialize", initialize_node, empty("node"));
    def(m, "DataNew", Table::make);
    def(m, "DataListNew", ListNode::make);
    def(m, "DataAllocate", allocate, remake("d"));
    def(m, NAMED(DataDispose), empty("d"));
    def(m, "DataListDispose", dispose_list, plain("head"));
    def_unlocked(m, NAMED(DataReverse), write("d"));
}

// --- Second generation -----------------------------------------------------------------------------------------------

/// Clears the slots that are gained, which the library does not.
int reallocate(Tree& d)
{
    const size_t before = d.slot_count();
    const int result = DATAReAllocate(d.record);
    if (const size_t now = d.slot_count(); now > before)
        std::fill(d.record->pvals + before, d.record->pvals + now, nullptr);
    return result;
}

TreeHeld list_to_array(Call& call, const TreeHeld& first)
{
    if (first == nullptr)
        return nullptr;
    if (first->is_part)
        call.refuse("first is part of a status and stands in no slot");
    return Tree::of(DATAListToDATA(call.take(first, "first", Use::read)));
}

void add_second_generation(py::module_& m)
{
    def(m, NAMED(DATAInitialize), empty("d"));
    def(m, "DATANew", Tree::make);
    def_unlocked(m, NAMED(DATAAllocate), remake("d"));
    def_unlocked(m, "DATAReAllocate", reallocate, remake("d"));
    def(m, NAMED(DATANodeDispose), empty("d"));
    def(m, NAMED(DATADispose), empty("d"));
    def(m, "DATAListToDATA", list_to_array, plain("first"));
    def(m, NAMED(DATAListCount), read("first", or_none));
    def(m, NAMED(DATACheckIfPoints), read("d", or_none));
    def(m, NAMED(DATACheckIfFace), read("d", or_none));
    def(m, NAMED(DATACheckIfPatch), read("d", or_none));
    def(m, NAMED(DATACheckIfMesh), read("d", or_none));
    def_unlocked(m, NAMED(DATAReverse), write("d"));
    def_unlocked(m, NAMED(DATASubReverse), write("d"));
}

// --- Operations ------------------------------------------------------------------------------------------------------

/// An array that is copied; not the arrays of a status, which a copy would share.
struct Source : Record<Required> {
    template <class C>
    ObjectTaken<C> take(Call& call, const Held<C>& given) const
    {
        const auto taken = Record::take<C>(call, given);
        if (given->is_part && given->record->type == DATA_TYPE_DATA)
            call.refuse("the arrays in the slots belong to a status and cannot be shared: copy one by one");
        return taken;
    }
};

Source source(const char* name)
{
    return {read(name)};
}

/// The output of a mix: written in place where it has the shape and kind of `like`, else made anew.
template <class Object>
auto* output_like(Call& call, const std::shared_ptr<Object>& output, const Object& like)
{
    if (output == nullptr || output->record == nullptr)
        return call.take(output, "output", Use::write);
    const auto& a = *like.record;
    const auto& o = *output->record;
    const int number = buffer_number(a.type);
    if (o.type == a.type && o.count == a.count && o.dim == a.dim && number < kSlots && buffer_at(o, number) != nullptr)
        return call.take(output, "output", Use::write);
    auto* const shaped = call.take(output, "output", Use::shape);
    if constexpr (std::is_same_v<Object, Tree>)
        output->part_company(); // the library disposes such an output, with all that hangs on it
    return shaped;
}

template <class R>
void def_mix(py::module_& m, const char* name, int (*mix)(R*, R*, double, double, R*))
{
    def_work<Object<R>&, R*, double, double, const Held<R>&>(
        m, name,
        [mix](Call& call, Object<R>& a, R* b, double wa, double wb, const Held<R>& output) {
            R* const o = output_like(call, output, a);
            return call.run([=, &a] { return mix(a.record, b, wa, wb, o); });
        },
        read("a"), read("b"), plain("wa"), plain("wb"), plain("output"));
}

template <class R>
void def_four_mix(py::module_& m, const char* name, int (*mix)(R*, R*, R*, R*, double, double, double, double, R*))
{
    def_work<Object<R>&, R*, R*, R*, double, double, double, double, const Held<R>&>(
        m, name,
        [mix](Call& call, Object<R>& a, R* b, R* c, R* d, double wa, double wb, double wc, double wd,
              const Held<R>& output) {
            R* const o = output_like(call, output, a);
            return call.run([=, &a] { return mix(a.record, b, c, d, wa, wb, wc, wd, o); });
        },
        read("a"), read("b"), read("c"), read("d"), plain("wa"), plain("wb"), plain("wc"), plain("wd"),
        plain("output"));
}

int bounds(Data* s, Data* o)
{
    // The library releases an output that is narrower, shorter or of another kind itself.
    if (s->dim > o->dim || o->count < 2 || s->type != o->type)
        return DataBounds(s, o);
    return with_old_buffers(*o, [=] { return DataBounds(s, o); });
}

void add_operations(py::module_& m)
{
    def_unlocked(m, NAMED(DataCat), source("first"), source("second"), shape("output"));
    def_unlocked(m, NAMED(DATACat), source("first"), source("second"), shape("output"));
    def_unlocked(m, NAMED(DataCopy), source("source"), shape("output"));
    def_unlocked(m, NAMED(DATACopy), source("source"), shape("output"));
    def_unlocked(m, NAMED(DataBBox), read("src"), write("box"));
    def_unlocked(m, NAMED(DATABBox), read("src"), write("box"));
    def_unlocked(m, NAMED(TransformData), in<16>("m"), read("source"), write("output"));
    def_unlocked(m, NAMED(TransformDATA), in<16>("m"), read("source"), write("output"));
    def_mix(m, NAMED(DataMix));
    def_mix(m, NAMED(DATAMix));
    def_four_mix(m, NAMED(Data4Mix));
    def_four_mix(m, NAMED(DATA4Mix));
    def_unlocked(m, "DataBounds", bounds, read("source"), shape("output"));
    def_unlocked(m, NAMED(DATABounds), read("source"), shape("output"));
    def_unlocked(m, NAMED(DataTriSample), read("triangles"), plain("seed"), write("points"),
                 read("vertex_attributes", optional), write("point_attributes", optional));
    def_unlocked(m, NAMED(DATATriSample), read("triangles"), plain("seed"), write("points"),
                 read("vertex_attributes", optional), write("point_attributes", optional));
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
    add_operations(m);
}

} // namespace korvale::raw
