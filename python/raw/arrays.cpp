// Records of both generations and operations on whole arrays, as functions.
#include <algorithm>
#include <cstdlib>

#include "bind.h"

namespace korvale::raw {
namespace {

using TreeHeld = std::shared_ptr<Tree>;

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

void add_arrays(py::module_& m)
{
    add_first_generation(m);
    add_second_generation(m);
    add_operations(m);
}

} // namespace korvale::raw
