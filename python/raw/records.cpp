// Records as Python objects: who owns which memory when, see records.h.
#include "records.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <unordered_set>
#include <utility>

namespace korvale::raw {

// --- Buffers ---------------------------------------------------------------------------------------------------------

namespace {

py::dtype component_of(int number)
{
    switch (number) {
    case DATA_TYPE_DOUBLE:
        return py::dtype::of<double>();
    case DATA_TYPE_INT:
        return py::dtype::of<int32_t>();
    case DATA_TYPE_BYTE:
        return py::dtype::of<uint8_t>();
    default:
        return py::dtype::of<uintptr_t>();
    }
}

/// The library frees only what the alloc fields say it has allocated.
template <class R>
void note_capacity([[maybe_unused]] R& record, bool is_wrapped)
{
    if constexpr (std::is_same_v<R, DATAstruct>) {
        if (is_wrapped) {
            record.alloc_count = record.alloc_dim = -1;
            record.alloc_type = record.type;
        } else if (record.alloc_count < 1 || record.alloc_dim < 1) {
            record.alloc_count = record.count;
            record.alloc_dim = record.dim;
            record.alloc_type = record.type;
        }
    }
}

} // namespace

Lease::~Lease()
{
    if (is_left)
        std::free(memory);
}

template <class R>
R& Buffers<R>::live() const
{
    if (record == nullptr)
        throw py::value_error("this record was part of a status that has been released");
    if (users != 0)
        throw std::runtime_error("this record is in use by a call of the library at the moment");
    return *record;
}

template <class R>
bool Buffers<R>::is_wrapped(int number) const
{
    return spots_[number].wrapped && spots_[number].wrapped_memory == buffer_at(*record, number);
}

template <class R>
size_t Buffers<R>::room(int number) const
{
    void* const memory = buffer_at(*record, number);
    if (memory == nullptr)
        return 0;
    return is_wrapped(number) ? spots_[number].wrapped_bytes : malloc_usable_size(memory);
}

template <class R>
std::string Buffers<R>::misfit() const
{
    const int number = buffer_number(record->type);
    if (is_part || record->count < 1 || record->dim < 1 || number == kBuffers || buffer_at(*record, number) == nullptr)
        return {};
    const size_t wanted = static_cast<size_t>(record->count) * static_cast<size_t>(record->dim);
    if (wanted <= room(number) / kComponentBytes[number])
        return {};
    return "count * dim is " + std::to_string(wanted) + ", and the buffer has room for " +
           std::to_string(room(number) / kComponentBytes[number]);
}

template <class R>
py::object Buffers<R>::view(int number)
{
    R& r = live();
    void* const memory = buffer_at(r, number);
    if (memory == nullptr || r.count < 0 || r.dim < 0)
        return py::none();
    const size_t width = kComponentBytes[number];
    if (static_cast<size_t>(r.count) * static_cast<size_t>(r.dim) > room(number) / width)
        throw py::value_error("count * dim is more than the buffer has room for");
    Spot& spot = spots_[number];
    py::object base;
    if (is_wrapped(number)) {
        base = spot.wrapped;
    } else {
        std::shared_ptr<Lease> lease = spot.lease.lock();
        if (lease == nullptr || lease->memory != memory)
            spot.lease = lease = std::make_shared<Lease>(memory);
        base = py::capsule(new std::shared_ptr<Lease>(lease),
                           [](void* held) { delete static_cast<std::shared_ptr<Lease>*>(held); });
    }
    const auto step = static_cast<py::ssize_t>(width);
    py::array array(component_of(number), {py::ssize_t{r.count}, py::ssize_t{r.dim}}, {step * r.dim, step}, memory,
                    base);
    if (is_locked)
        array.attr("setflags")(py::arg("write") = false);
    return array;
}

template <class R>
void Buffers<R>::wrap(const py::array& array)
{
    R& r = live();
    if (is_part)
        throw py::value_error("this record is part of a status, which owns its buffer");
    const int number = py::isinstance<py::array_t<double>>(array)    ? DATA_TYPE_DOUBLE
                       : py::isinstance<py::array_t<int32_t>>(array) ? DATA_TYPE_INT
                       : py::isinstance<py::array_t<uint8_t>>(array) ? DATA_TYPE_BYTE
                                                                     : kSlots;
    if (number == kSlots)
        throw py::value_error("an array of float64, int32 or uint8 is wanted, not of " +
                              py::str(array.dtype()).cast<std::string>());
    if (array.ndim() != 1 && array.ndim() != 2)
        throw py::value_error("an array of shape (count,) or (count, dim) is wanted, not one of " +
                              std::to_string(array.ndim()) + " dimensions");
    if ((array.flags() & py::array::c_style) == 0 || !array.writeable())
        throw py::value_error("the array has to be contiguous and writable: wrap a copy of it");
    const py::ssize_t dim = array.ndim() == 2 ? array.shape(1) : 1;
    if (array.shape(0) > INT32_MAX || dim > INT32_MAX || array.size() > INT32_MAX)
        throw py::value_error("a record holds at most 2147483647 numbers");
    for (int other = 0; other < kBuffers; ++other)
        leave(other);
    r.count = static_cast<int32_t>(array.shape(0));
    r.dim = static_cast<int32_t>(dim);
    r.type = number;
    note_capacity(r, true);
    Spot& spot = spots_[number];
    spot.wrapped = array;
    spot.wrapped_memory = const_cast<void*>(array.data()); // its own writable memory, as was asked above
    spot.wrapped_bytes = static_cast<size_t>(array.nbytes());
    set_buffer_at(r, number, spot.wrapped_memory);
}

template <class R>
void Buffers<R>::leave(int number)
{
    void* const memory = buffer_at(*record, number);
    Spot& spot = spots_[number];
    if (memory == nullptr)
        return;
    if (is_wrapped(number))
        spot.wrapped = py::object();
    else if (const std::shared_ptr<Lease> lease = spot.lease.lock(); lease != nullptr && lease->memory == memory)
        lease->is_left = true;
    else
        std::free(memory);
    spot.lease.reset();
    set_buffer_at(*record, number, nullptr);
}

template <class R>
void Buffers<R>::stand_apart()
{
    for (int number = 0; number < kBuffers; ++number) {
        void* const memory = buffer_at(*record, number);
        const std::shared_ptr<Lease> lease = spots_[number].lease.lock();
        if (memory == nullptr || (!is_wrapped(number) && (lease == nullptr || lease->memory != memory)))
            continue;
        const bool was_wrapped = is_wrapped(number);
        const size_t bytes = room(number);
        void* const copy = std::malloc(std::max<size_t>(bytes, 1));
        if (copy == nullptr)
            throw std::bad_alloc();
        std::memcpy(copy, memory, bytes);
        leave(number);
        set_buffer_at(*record, number, copy);
        if (was_wrapped)
            note_capacity(*record, false);
    }
}

template <class R>
void Buffers<R>::settle()
{
    for (int number = 0; number < kBuffers; ++number)
        if (spots_[number].wrapped && !is_wrapped(number))
            spots_[number].wrapped = py::object();
}

template class Buffers<Data>;
template class Buffers<DATAstruct>;

// --- Records of the first generation ---------------------------------------------------------------------------------

namespace {

template <class Object, class R>
void let_go_of(Object& object, R* record)
{
    if (object.is_part || record == nullptr)
        return;
    for (int number = 0; number < kBuffers; ++number)
        object.leave(number);
    std::free(record);
}

template <class Object, class R>
std::shared_ptr<Object> taken(R* record)
{
    if (record == nullptr)
        throw std::bad_alloc();
    return std::make_shared<Object>(record);
}

/// Whether something besides Python may hold `self`, an argument of a call from Python: the Python object and the
/// argument are two. What nothing else holds stands in no slot and no list.
template <class Object>
bool is_held_elsewhere(const std::shared_ptr<Object>& self)
{
    return self.use_count() > 2;
}

} // namespace

Table::~Table()
{
    let_go_of(*this, record);
}

std::shared_ptr<Table> Table::make()
{
    return taken<Table>(DataNew());
}

ListNode::~ListNode()
{
    // One by one: a list may be longer than the stack is deep.
    std::shared_ptr<ListNode> next = std::move(following);
    while (next != nullptr && next.use_count() == 1)
        next = std::shared_ptr<ListNode>(std::move(next->following));
}

std::shared_ptr<ListNode> ListNode::make()
{
    return taken<ListNode>(DataListNew());
}

void ListNode::link(const std::shared_ptr<ListNode>& self, std::shared_ptr<ListNode> next)
{
    for (const ListNode* n = is_held_elsewhere(self) ? next.get() : nullptr; n != nullptr; n = n->following.get())
        if (n == self.get())
            throw py::value_error("next: the list would run in a circle");
    if (next == self)
        throw py::value_error("next: the list would run in a circle");
    self->node().next = next == nullptr ? nullptr : &next->node();
    self->following = std::move(next);
}

// --- Records of the second generation --------------------------------------------------------------------------------

namespace {

std::unordered_map<DATAstruct*, std::weak_ptr<Tree>>& trees()
{
    static auto* const known = new std::unordered_map<DATAstruct*, std::weak_ptr<Tree>>; // outlives the interpreter
    return *known;
}

/// Where trees wait for their end, so that deep ones do not end in deep calls.
std::vector<std::shared_ptr<Tree>>& waiting()
{
    static auto* const those = new std::vector<std::shared_ptr<Tree>>;
    return *those;
}

} // namespace

std::shared_ptr<Tree> Tree::make()
{
    return of(DATANew());
}

std::shared_ptr<Tree> Tree::of(DATAstruct* record)
{
    if (record == nullptr)
        throw std::bad_alloc();
    std::weak_ptr<Tree>& known = trees()[record];
    if (std::shared_ptr<Tree> tree = known.lock())
        return tree;
    auto tree = std::make_shared<Tree>(record);
    known = tree;
    tree->settle_tree();
    return tree;
}

Tree::~Tree()
{
    static bool is_emptying = false;
    for (auto& child : children)
        waiting().push_back(std::move(child.second));
    if (following != nullptr)
        waiting().push_back(std::move(following));
    if (!is_part && record != nullptr)
        trees().erase(record);
    let_go_of(*this, record);
    if (is_emptying)
        return;
    is_emptying = true;
    while (!waiting().empty()) {
        const std::shared_ptr<Tree> last = std::move(waiting().back());
        waiting().pop_back();
    }
    is_emptying = false;
}

size_t Tree::slot_count() const
{
    if (record->pvals == nullptr || record->alloc_type != DATA_TYPE_DATA || record->alloc_count < 1 ||
        record->alloc_dim < 1)
        return 0;
    const size_t wanted = static_cast<size_t>(record->alloc_count) * static_cast<size_t>(record->alloc_dim);
    return std::min(wanted, room(kSlots) / sizeof(void*));
}

void Tree::settle_tree()
{
    settle();
    if (is_part)
        return;
    if (record->pvals != nullptr || !children.empty()) {
        std::unordered_map<DATAstruct*, std::shared_ptr<Tree>> now;
        for (size_t i = 0, n = slot_count(); i < n; ++i)
            if (auto* const child = static_cast<DATAstruct*>(record->pvals[i]); child != nullptr)
                now.emplace(child, nullptr);
        for (auto& [child, tree] : now)
            tree = of(child);
        children.swap(now); // those that are in no slot any more go with `now`
    }
    if (record->next == nullptr)
        following.reset();
    else if (following == nullptr || following->record != record->next)
        following = of(record->next);
}

void Tree::part_company()
{
    std::fill_n(record->pvals, slot_count(), nullptr);
    record->next = nullptr;
    settle_tree();
}

bool Tree::reaches(const Tree& wanted) const
{
    std::vector<const Tree*> open = {this};
    std::unordered_set<const Tree*> seen;
    while (!open.empty()) {
        const Tree* const tree = open.back();
        open.pop_back();
        if (tree == &wanted)
            return true;
        if (!seen.insert(tree).second)
            continue;
        if (tree->following != nullptr)
            open.push_back(tree->following.get());
        for (const auto& child : tree->children)
            open.push_back(child.second.get());
    }
    return false;
}

void Tree::link(const std::shared_ptr<Tree>& self, std::shared_ptr<Tree> next)
{
    DATAstruct& r = self->live();
    if (self->is_part || (next != nullptr && next->is_part))
        throw py::value_error("next: a record that is part of a status stands in no list");
    if (next == self || (next != nullptr && is_held_elsewhere(self) && next->reaches(*self)))
        throw py::value_error("next: the list would run in a circle");
    r.next = next == nullptr ? nullptr : &next->live();
    self->following = std::move(next);
}

void Tree::fill(const std::shared_ptr<Tree>& self, const std::vector<std::shared_ptr<Tree>>& records)
{
    DATAstruct& r = self->live();
    if (self->is_part)
        throw py::value_error("pvals: this record is part of a status, which owns its slots");
    for (const auto& child : records) {
        if (child != nullptr && child->is_part)
            throw py::value_error("pvals: a record that is part of a status stands in no slot");
        if (child == self || (child != nullptr && is_held_elsewhere(self) && child->reaches(*self)))
            throw py::value_error("pvals: an array cannot hold itself");
    }
    if (records.empty() || records.size() > INT32_MAX)
        throw py::value_error("pvals: 1 to 2147483647 records are wanted");
    const auto shaped = static_cast<int64_t>(r.count) * r.dim;
    if (r.type != DATA_TYPE_DATA || r.alloc_type != DATA_TYPE_DATA || self->slot_count() < records.size() ||
        r.count < 1 || r.dim < 1 || shaped != static_cast<int64_t>(records.size())) {
        for (int number = 0; number < kBuffers; ++number)
            self->leave(number);
        r.count = static_cast<int32_t>(records.size());
        r.dim = 1;
        r.type = DATA_TYPE_DATA;
        r.alloc_count = r.alloc_dim = -1;
        if (DATAAllocate(&r) != 1)
            throw std::bad_alloc();
    }
    for (size_t i = 0; i < records.size(); ++i)
        r.pvals[i] = records[i] == nullptr ? nullptr : &records[i]->live();
    self->settle_tree();
}

py::object Tree::slots()
{
    DATAstruct& r = live();
    if (r.type != DATA_TYPE_DATA)
        return view(kSlots);
    if (r.pvals == nullptr || r.count < 0 || r.dim < 0)
        return py::none();
    const size_t wanted = static_cast<size_t>(r.count) * static_cast<size_t>(r.dim);
    if (wanted > slot_count())
        throw py::value_error("count * dim is more than there are slots");
    py::tuple records(wanted);
    const std::shared_ptr<Whole> around = whole.lock();
    for (size_t i = 0; i < wanted; ++i) {
        auto* const child = static_cast<DATAstruct*>(r.pvals[i]);
        records[i] = child == nullptr ? py::none() : is_part ? around->part(child, is_locked) : py::cast(of(child));
    }
    return records;
}

std::string Tree::misfit_below() const
{
    std::vector<const Tree*> open = {this};
    std::unordered_set<const Tree*> seen;
    while (!open.empty()) {
        const Tree* const tree = open.back();
        open.pop_back();
        if (tree->is_part || !seen.insert(tree).second)
            continue;
        if (std::string why = tree->misfit(); !why.empty())
            return why;
        const DATAstruct& r = *tree->record;
        if (r.type == DATA_TYPE_DATA && r.pvals != nullptr && r.count > 0 && r.dim > 0 &&
            static_cast<size_t>(r.count) * static_cast<size_t>(r.dim) > tree->slot_count())
            return "its kind is DATA_TYPE_DATA, and its slots hold no arrays";
        for (const auto& child : tree->children)
            open.push_back(child.second.get());
    }
    return {};
}

// --- Statuses --------------------------------------------------------------------------------------------------------

namespace {

/// An object and the status that keeps its record.
template <class Object>
struct Part {
    std::shared_ptr<Whole> whole;
    std::shared_ptr<Object> object;
};

template <class Object, class R>
py::object part_of(std::unordered_map<void*, std::shared_ptr<Object>>& parts, std::shared_ptr<Whole> whole, R* record,
                   bool is_locked)
{
    if (record == nullptr)
        return py::none();
    std::shared_ptr<Object>& object = parts[record];
    if (object == nullptr) {
        object = std::make_shared<Object>(record);
        object->whole = whole;
        object->is_part = true;
        object->is_locked = is_locked;
    }
    const auto both = std::make_shared<Part<Object>>(Part<Object>{std::move(whole), object});
    return py::cast(std::shared_ptr<Object>(both, object.get()));
}

} // namespace

py::object Whole::part(DATAstruct* record, bool is_locked)
{
    return part_of(trees_, shared_from_this(), record, is_locked);
}

py::object Whole::part(Data* record, bool is_locked)
{
    return part_of(tables_, shared_from_this(), record, is_locked);
}

void Whole::parts_stand_apart()
{
    for (auto& tree : trees_)
        tree.second->stand_apart();
    for (auto& table : tables_)
        table.second->stand_apart();
}

namespace {

template <class Object>
void kill(Object& object)
{
    for (int number = 0; number < kSlots; ++number) // slots are the library's, which follows them
        object.leave(number);
    object.record = nullptr;
}

} // namespace

void Whole::parts_die()
{
    for (auto& tree : trees_)
        kill(*tree.second);
    for (auto& table : tables_)
        kill(*table.second);
    trees_.clear();
    tables_.clear();
}

void Whole::part_dies(void* record)
{
    if (const auto tree = trees_.find(record); tree != trees_.end()) {
        kill(*tree->second);
        trees_.erase(tree);
    }
}

// --- Calls -----------------------------------------------------------------------------------------------------------

namespace {

thread_local std::exception_ptr raised;

} // namespace

Call::~Call()
{
    for (int* const users : marks_)
        --*users;
}

void Call::refuse(const std::string& why) const
{
    throw py::value_error(std::string(function_) + ": " + why);
}

void Call::require(bool holds, const char* argument) const
{
    if (!holds)
        throw py::type_error(std::string(function_) + ": " + argument + " is None, a record is wanted");
}

void Call::mark(int& users, const char* argument)
{
    if (std::find(marks_.begin(), marks_.end(), &users) != marks_.end())
        return;
    if (users != 0)
        throw std::runtime_error(std::string(function_) + ": " + argument + " is in use by another call");
    ++users;
    marks_.push_back(&users);
}

void Call::use(const std::shared_ptr<Whole>& status, const char* argument, bool may_nest)
{
    require(status != nullptr, argument);
    const auto here = std::this_thread::get_id();
    if (may_nest && status->users != 0 && status->user == here)
        return;
    mark(status->users, argument);
    status->user = here;
    kept_.push_back(status);
    statuses_.push_back(status.get());
}

template <class Object>
void Call::prepare(Object& object, const char* argument, Use use)
{
    if (object.record == nullptr)
        refuse(std::string(argument) + " was part of a status that has been released");
    const bool may_move = use != Use::read && use != Use::write;
    if (object.is_part && may_move)
        refuse(std::string(argument) + " is part of a status, which owns its buffer");
    if (object.is_locked && use == Use::write)
        refuse(std::string(argument) + " is part of a status, which relies on its elements");
    mark(object.users, argument);
    if (const std::shared_ptr<Whole> whole = object.whole.lock())
        mark(whole->users, argument);
    if (use == Use::shape || use == Use::remake)
        object.stand_apart();
    if (use == Use::empty)
        for (int number = 0; number < kBuffers; ++number)
            object.leave(number);
}

Data* Call::take(Table& table, const char* argument, Use use)
{
    prepare(table, argument, use);
    if (use == Use::read || use == Use::write || use == Use::shape)
        if (const std::string why = table.misfit(); !why.empty())
            refuse(std::string(argument) + ": " + why);
    if (use == Use::shape || use == Use::remake)
        tables_.push_back(&table);
    return table.record;
}

DATAstruct* Call::take(Tree& tree, const char* argument, Use use)
{
    if (use == Use::empty && tree.record != nullptr && !tree.is_part)
        tree.part_company();
    prepare(tree, argument, use);
    if (use == Use::read || use == Use::write || use == Use::shape)
        if (const std::string why = tree.misfit_below(); !why.empty())
            refuse(std::string(argument) + ": " + why);
    if (use == Use::shape || use == Use::remake)
        trees_.push_back(&tree);
    return tree.record;
}

void Call::settle()
{
    for (Table* const table : tables_)
        table->settle();
    for (Tree* const tree : trees_)
        tree->settle_tree();
    for (Whole* const status : statuses_)
        status->take_back();
}

std::exception_ptr Call::forget_raised()
{
    return std::exchange(raised, nullptr);
}

void Call::raise_again(const std::exception_ptr& before)
{
    if (std::exception_ptr now = std::exchange(raised, before))
        std::rethrow_exception(now);
}

void keep_raised()
{
    if (raised == nullptr)
        raised = std::current_exception();
}

bool has_raised()
{
    return raised != nullptr;
}

// --- Numbers ---------------------------------------------------------------------------------------------------------

namespace {

std::string shape_of(const py::array& array)
{
    return py::str(array.attr("shape")).cast<std::string>();
}

} // namespace

py::array_t<double> numbers(const py::handle& given, py::ssize_t count, const char* function, const char* argument)
{
    const auto array = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(given);
    if (!array) {
        PyErr_Clear();
        throw py::type_error(std::string(function) + ": " + argument + " has to be " + std::to_string(count) +
                             " numbers");
    }
    if (array.size() != count)
        throw py::value_error(std::string(function) + ": " + argument + " has to be " + std::to_string(count) +
                              " numbers, not of shape " + shape_of(array));
    return array;
}

py::array_t<double> place(const py::handle& given, const std::vector<py::ssize_t>& shape, const char* function,
                          const char* argument)
{
    if (given.is_none()) {
        py::array_t<double> made(shape);
        std::memset(made.mutable_data(), 0, static_cast<size_t>(made.nbytes()));
        return made;
    }
    const std::string named = std::string(function) + ": " + argument;
    if (!py::isinstance<py::array>(given) || !py::isinstance<py::array_t<double>>(given))
        throw py::type_error(named + " has to be an array of float64");
    const auto array = py::reinterpret_borrow<py::array>(given);
    py::ssize_t size = 1;
    for (const py::ssize_t n : shape)
        size *= n;
    const bool fits = array.ndim() == static_cast<py::ssize_t>(shape.size())
                          ? std::equal(shape.begin(), shape.end(), array.shape())
                          : array.ndim() == 1 && array.size() == size;
    if (!fits)
        throw py::value_error(named + " has to hold " + std::to_string(size) + " numbers, not shape " +
                              shape_of(array));
    if ((array.flags() & py::array::c_style) == 0 || !array.writeable())
        throw py::value_error(named + " has to be contiguous and writable");
    return py::reinterpret_borrow<py::array_t<double>>(given);
}

} // namespace korvale::raw
