// Borders, and bands along polylines.
#include <algorithm>

#include "records.h"

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

    int run()
    {
        Call call("Border");
        call.use(shared_from_this(), "status");
        status.path = call.read_optional(path, "path");
        status.output = nullptr; // a former one belongs to its object; the library would free it
        const int result = call.run([this] { return Border(&status); });
        output = status.output == nullptr ? nullptr : taken(status.output);
        return result;
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

constexpr int kArrays = 10;
constexpr std::array<const char*, kArrays> kNames = {"path", "output", "flat",   "velocity", "direction",
                                                     "line", "dead",   "length", "rate",     "merge"};
constexpr std::array<DATAstruct * BORDERStatus::*, kArrays> kFields = {
    &BORDERStatus::path,      &BORDERStatus::output, &BORDERStatus::flat, &BORDERStatus::velocity,
    &BORDERStatus::direction, &BORDERStatus::line,   &BORDERStatus::dead, &BORDERStatus::length,
    &BORDERStatus::rate,      &BORDERStatus::merge};

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
            arrays[i] = Tree::of(status.*kFields[i]);
    }

    /// Calls the library; all arrays may get other buffers, the path among them for edits, and the record others in
    /// their places.
    template <class Work>
    int run(const char* function, Work&& work, bool is_edit = false)
    {
        Call call(function);
        call.use(shared_from_this(), "status");
        prepare(call, is_edit);
        const int result = call.run([&] { return work(&status); });
        for (int i = 0; i < kArrays; ++i)
            if (DATAstruct* const record = status.*kFields[i]; record == nullptr)
                arrays[i].reset();
            else if (arrays[i] == nullptr || arrays[i]->record != record)
                arrays[i] = Tree::of(record);
        return result;
    }

private:
    void prepare(Call& call, bool is_edit)
    {
        for (int i = 0; is_edit && i < 2; ++i)
            if (arrays[i] != nullptr && arrays[i]->record->count >= 0 &&
                (arrays[i]->record->type != DATA_TYPE_DOUBLE || arrays[i]->record->dim != 3))
                call.refuse(std::string(kNames[i]) + " has to be of points: kind double, dim 3");
        std::vector<const Tree*> used;
        for (int i = 0; i < kArrays; ++i) {
            status.*kFields[i] = arrays[i] == nullptr                           ? nullptr
                                 : i == 0 && arrays[0] != arrays[1] && !is_edit ? call.read(arrays[0], kNames[0])
                                                                                : call.shape(arrays[i], kNames[i]);
            if (arrays[i] == nullptr || (i == 1 && arrays[1] == arrays[0]))
                continue;
            add(used, *arrays[i]);
            if (i == 1) // the borders of a list are shaped as well
                for (const auto& child : arrays[1]->children)
                    call.shape(child.second, kNames[1]);
        }
        std::sort(used.begin(), used.end());
        if (std::adjacent_find(used.begin(), used.end()) != used.end())
            call.refuse("one record stands in several places; only output may be path");
    }

    static void add(std::vector<const Tree*>& used, const Tree& tree)
    {
        used.push_back(&tree);
        for (const auto& child : tree.children)
            used.push_back(child.second.get());
    }
};

template <class Status>
void require(const std::shared_ptr<Status>& status, const char* function)
{
    if (status == nullptr)
        throw py::type_error(std::string(function) + ": status is None, a record is wanted");
}

template <class Status>
void add_numbers(py::class_<Status, Whole, std::shared_ptr<Status>>& type)
{
    const auto field = [&type](const char* name, auto member, const char* text) {
        type.def_property(
            name, [member](const Status& s) { return s.status.*member; },
            [member](Status& s, std::remove_reference_t<decltype(std::declval<Status>().status.*member)> value) {
                s.status.*member = value;
            },
            text);
    };
    using R = decltype(Status::status);
    field("height", &R::height, "Lift along the normal of the outline's plane.");
    field("distance", &R::distance, "Signed offset; above 0 outwards.");
    field("keep_collapsed", &R::keep_collapsed, "1: a point of the border per input point; 0: removed ones left out.");
    field("split_events", &R::split_events,
          "1: stop also where a vertex meets a far edge; 0: only at vanishing edges.");
    if constexpr (std::is_same_v<Status, Border1>) {
        field("reserved1", &R::reserved1, "Kept for hosts that read it.");
        field("reserved2", &R::reserved2, "Kept for hosts that read it.");
        field("reserved3", &R::reserved3, "Kept for hosts that read it.");
    }
}

} // namespace

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
    add_numbers(first);

    py::class_<Border2, Whole, std::shared_ptr<Border2>> second(m, "BORDERStatus", described("BORDERStatus"));
    second.def(py::init<>());
    for (int i = 0; i < kArrays; ++i)
        second.def_property(
            kNames[i], [i](const Border2& s) { return s.arrays[i]; },
            [i](Border2& s, std::shared_ptr<Tree> array) { s.arrays[i] = borrowable(std::move(array), kNames[i]); });
    add_numbers(second);

    m.def(
        "BorderInitialize",
        [](const std::shared_ptr<Border1>& status) {
            Call("BorderInitialize").use(status, "status");
            status->initialize();
        },
        py::arg("status"), described("BorderInitialize"));
    m.def(
        "BORDERInitialize",
        [](const std::shared_ptr<Border2>& status) {
            Call("BORDERInitialize").use(status, "status");
            status->initialize();
        },
        py::arg("status"), described("BORDERInitialize"));
    m.def(
        "Border",
        [](const std::shared_ptr<Border1>& status) {
            require(status, "Border");
            return status->run();
        },
        py::arg("status"), described("Border"));
    const auto def = [&m](const char* name, auto function) {
        m.def(
            name,
            [name, function](const std::shared_ptr<Border2>& status) {
                require(status, name);
                return status->run(name, function);
            },
            py::arg("status"), described(name));
    };
    def("BORDER_BORDER", BORDER_BORDER);
    def("BORDER", BORDER);
    const auto def_edit = [&m](const char* name, void (*function)(BORDERStatus*)) {
        m.def(
            name,
            [name, function](const std::shared_ptr<Border2>& status) {
                require(status, name);
                status->run(
                    name, [function](BORDERStatus* s) { return function(s), 1; }, true);
            },
            py::arg("status"), described(name));
    };
    def_edit("BORDERAddWings", BORDERAddWings);
    def_edit("BORDERRemoveWings", BORDERRemoveWings);
    def_edit("BORDERMakePipe", BORDERMakePipe);
}

} // namespace korvale::raw
