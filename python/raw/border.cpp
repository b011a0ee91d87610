// Borders, and bands along polylines.
#include <algorithm>

#include "bind.h"

namespace korvale::raw {
namespace {

// --- First generation ------------------------------------------------------------------------------------------------

/// A `BorderStatus` and its two arrays.
class Border1 : public Whole {
public:
    BorderStatus status = {};
    std::shared_ptr<Table> path, output;

    Border1() { initialize(); }

    void initialize()
    {
        BorderInitialize(&status);
        path = taken(status.path);
        output.reset();
    }

    void look(Call& call) override
    {
        status.path = call.take_optional(path, "path", Use::read);
        status.output = nullptr; // a former one belongs to its object; the library would free it
    }

    void take_back() override
    {
        if (status.output == nullptr)
            output.reset();
        else if (output == nullptr || output->record != status.output)
            output = taken(status.output);
    }

private:
    static std::shared_ptr<Table> taken(Data* record)
    {
        if (record == nullptr)
            throw std::bad_alloc();
        return std::make_shared<Table>(record);
    }
};

// --- Second generation -----------------------------------------------------------------------------------------------

struct Place {
    const char* name;
    DATAstruct* BORDERStatus::*field;
};
constexpr Place kPlaces[] = {
    {FIELD(BORDERStatus, path)},     {FIELD(BORDERStatus, output)},    {FIELD(BORDERStatus, flat)},
    {FIELD(BORDERStatus, velocity)}, {FIELD(BORDERStatus, direction)}, {FIELD(BORDERStatus, line)},
    {FIELD(BORDERStatus, dead)},     {FIELD(BORDERStatus, length)},    {FIELD(BORDERStatus, rate)},
    {FIELD(BORDERStatus, merge)},
};
constexpr int kArrays = std::size(kPlaces);

/// A `BORDERStatus` and its ten arrays.
class Border2 : public Whole {
public:
    BORDERStatus status = {};
    std::array<std::shared_ptr<Tree>, kArrays> arrays;

    Border2() { initialize(); }

    void initialize()
    {
        BORDERInitialize(&status);
        for (int i = 0; i < kArrays; ++i)
            arrays[i] = Tree::of(status.*kPlaces[i].field);
    }

    void look(Call& call) override { prepare(call, false); }

    /// All arrays may get other buffers, the path among them for edits, and the record others in their places.
    void prepare(Call& call, bool is_edit)
    {
        for (int i = 0; is_edit && i < 2; ++i)
            if (arrays[i] != nullptr && arrays[i]->record->count >= 0 &&
                (arrays[i]->record->type != DATA_TYPE_DOUBLE || arrays[i]->record->dim != 3))
                call.refuse(std::string(kPlaces[i].name) + " has to be of points: kind double, dim 3");
        std::vector<const Tree*> used;
        for (int i = 0; i < kArrays; ++i) {
            status.*kPlaces[i].field = arrays[i] == nullptr ? nullptr
                                       : i == 0 && arrays[0] != arrays[1] && !is_edit
                                           ? call.take(arrays[0], kPlaces[0].name, Use::read)
                                           : call.take(arrays[i], kPlaces[i].name, Use::shape);
            if (arrays[i] == nullptr || (i == 1 && arrays[1] == arrays[0]))
                continue;
            add(used, *arrays[i]);
            if (i == 1) // the borders of a list are shaped as well
                for (const auto& child : arrays[1]->children)
                    call.take(child.second, kPlaces[1].name, Use::shape);
        }
        std::sort(used.begin(), used.end());
        if (std::adjacent_find(used.begin(), used.end()) != used.end())
            call.refuse("one record stands in several places; only output may be path");
    }

    void take_back() override
    {
        for (int i = 0; i < kArrays; ++i)
            if (DATAstruct* const record = status.*kPlaces[i].field; record == nullptr)
                arrays[i].reset();
            else if (arrays[i] == nullptr || arrays[i]->record != record)
                arrays[i] = Tree::of(record);
    }

private:
    static void add(std::vector<const Tree*>& used, const Tree& tree)
    {
        used.push_back(&tree);
        for (const auto& child : tree.children)
            used.push_back(child.second.get());
    }
};

/// A status whose path is changed in place.
struct Edited : Status {
    template <class C>
    ObjectTaken<C> take(Call& call, const Held<C>& given) const
    {
        call.use(given, name);
        given->prepare(call, true);
        return {given};
    }
};

Edited edited(const char* name)
{
    return {{{name}}};
}

template <class R, class Class>
void add_numbers(Class& type)
{
    def_number(type, FIELD(R, height), "Lift along the normal of the outline's plane.");
    def_number(type, FIELD(R, distance), "Signed offset; above 0 outwards.");
    def_number(type, FIELD(R, keep_collapsed), "1: a point of the border per input point; 0: removed ones left out.");
    def_number(type, FIELD(R, split_events),
               "1: stop also where a vertex meets a far edge; 0: only at vanishing edges.");
}

} // namespace

template <>
struct ObjectOf<BorderStatus> : std::type_identity<Border1> {
};
template <>
struct ObjectOf<BORDERStatus> : std::type_identity<Border2> {
};

void add_border(py::module_& m)
{
    py::class_<Border1, Whole, std::shared_ptr<Border1>> first(m, "BorderStatus", described("BorderStatus"));
    first.def(py::init<>())
        .def_property(
            "path", [](const Border1& s) { return s.path; },
            [](Border1& s, std::shared_ptr<Table> path) { s.path = borrowable(std::move(path), "path"); },
            "The outline [n][3] of doubles.")
        .def_property_readonly(
            "output", [](const Border1& s) { return s.output; }, "The border [m][3], or None.");
    add_numbers<BorderStatus>(first);
    def_number(first, FIELD(BorderStatus, reserved1), "Kept for hosts that read it.");
    def_number(first, FIELD(BorderStatus, reserved2), "Kept for hosts that read it.");
    def_number(first, FIELD(BorderStatus, reserved3), "Kept for hosts that read it.");

    py::class_<Border2, Whole, std::shared_ptr<Border2>> second(m, "BORDERStatus", described("BORDERStatus"));
    second.def(py::init<>());
    for (int i = 0; i < kArrays; ++i)
        second.def_property(
            kPlaces[i].name, [i](const Border2& s) { return s.arrays[i]; },
            [i](Border2& s, std::shared_ptr<Tree> array) {
                s.arrays[i] = borrowable(std::move(array), kPlaces[i].name);
            });
    add_numbers<BORDERStatus>(second);

    def(m, "BorderInitialize", &Border1::initialize, in_any_state("status"));
    def(m, "BORDERInitialize", &Border2::initialize, in_any_state("status"));
    def_unlocked(m, NAMED(Border), status("status"));
    def_unlocked(m, NAMED(BORDER_BORDER), status("status"));
    def_unlocked(m, NAMED(BORDER), status("status"));
    def_unlocked(m, NAMED(BORDERAddWings), edited("status"));
    def_unlocked(m, NAMED(BORDERRemoveWings), edited("status"));
    def_unlocked(m, NAMED(BORDERMakePipe), edited("status"));
}

} // namespace korvale::raw
