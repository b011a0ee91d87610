#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <unordered_map>
#include <vector>

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include "korvale.h"

/// @file
/// The library's records as Python objects.
///
/// Memory has one owner at any time. A buffer belongs to its record, to the NumPy array that the record wraps, or, once
/// the record has let go of it, to the views that look at it; so no view ever outlives its memory. A record belongs to
/// the Python objects that name it: those that hold it, and the arrays in whose slots or lists it stands. A record that
/// is part of a status belongs to the status, and goes dead with it.
///
/// Everything here is called with the interpreter lock held.

namespace korvale::raw {

namespace py = pybind11;

/// The buffers of a record, numbered: doubles, ints, bytes, slots.
constexpr int kBuffers = 4;
constexpr int kSlots = 3;
constexpr std::array<size_t, kBuffers> kComponentBytes = {8, 4, 1, 8};

/// The number of the buffer that a kind is kept in; kBuffers for an unknown kind.
inline int buffer_number(int32_t kind)
{
    return kind == DATA_TYPE_DATA ? kSlots : kind < 0 || kind > DATA_TYPE_DATA ? kBuffers : kind;
}

/// Calls `visit` with the pointer to a buffer; with a null one for a number that the record has none of.
template <class R, class Visit>
auto at_buffer(R& record, int number, Visit&& visit)
{
    void* none = nullptr;
    switch (number) {
    case DATA_TYPE_DOUBLE:
        return visit(record.dvals);
    case DATA_TYPE_INT:
        return visit(record.ivals);
    case DATA_TYPE_BYTE:
        return visit(record.bvals);
    default:
        if constexpr (requires { record.pvals; })
            return number == kSlots ? visit(record.pvals) : visit(none);
        else
            return visit(none);
    }
}

template <class R>
void* buffer_at(const R& record, int number)
{
    return at_buffer(record, number, [](auto* buffer) -> void* { return buffer; });
}

template <class R>
void set_buffer_at(R& record, int number, void* memory)
{
    at_buffer(record, number, [=](auto*& buffer) { buffer = static_cast<std::decay_t<decltype(buffer)>>(memory); });
}

/// Memory that views look at. Once its record has let go of it, the last view frees it.
struct Lease {
    void* memory;
    bool is_left = false;
    explicit Lease(void* looked_at) : memory(looked_at) {}
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;
    ~Lease();
};

class Call;
class Whole;

/// A record of either generation and what Python has to do with its buffers.
template <class R>
class Buffers {
public:
    R* record;                  ///< null once the status it was part of has been released
    std::weak_ptr<Whole> whole; ///< the status it is part of
    bool is_part = false;       ///< of a status, to which its sizes and buffers belong
    bool is_locked = false;     ///< the library relies on its elements, so views cannot be written
    int users = 0;              ///< calls that work on it at the moment

    explicit Buffers(R* taken) : record(taken) {}
    Buffers(const Buffers&) = delete;
    Buffers& operator=(const Buffers&) = delete;
    virtual ~Buffers() = default;

    /// The record; raises for a dead one and while a call works on it.
    R& live() const;

    /// Bytes that buffer `number` has.
    size_t room(int number) const;

    /// The buffer as an array [count][dim], or None; no copy.
    py::object view(int number);

    /// Makes `array` the record's buffer, its kind and its shape; no copy.
    void wrap(const py::array& array);

    /// Gives buffer `number` to its views, or frees it; the record has none then.
    void leave(int number);

    /// Before the library may free or move a buffer: it gets a copy of what views look at or NumPy owns.
    void stand_apart();

    /// After a call: forgets what the record no longer wraps.
    void settle();

    /// A sentence that says what is wrong with the sizes, or nothing.
    std::string misfit() const;

private:
    struct Spot {
        std::weak_ptr<Lease> lease;
        py::object wrapped;
        void* wrapped_memory = nullptr;
        size_t wrapped_bytes = 0;
    };
    std::array<Spot, kBuffers> spots_;

    bool is_wrapped(int number) const;
};

/// A `Data`, of its own or part of a status.
class Table : public Buffers<Data> {
public:
    using Buffers::Buffers;
    ~Table() override;
    /// A new empty one.
    static std::shared_ptr<Table> make();
};

/// A `data_list_struct`.
class ListNode : public Table {
public:
    std::shared_ptr<ListNode> following;

    using Table::Table;
    ~ListNode() override;
    static std::shared_ptr<ListNode> make();
    data_list_struct& node() const { return static_cast<data_list_struct&>(live()); }
    static void link(const std::shared_ptr<ListNode>& self, std::shared_ptr<ListNode> next);
};

/// A `DATAstruct`. Records in its slots and its list are held by it, so that the library never owns them.
class Tree : public Buffers<DATAstruct> {
public:
    std::unordered_map<DATAstruct*, std::shared_ptr<Tree>> children; ///< of all slots
    std::shared_ptr<Tree> following;

    using Buffers::Buffers;
    ~Tree() override;
    static std::shared_ptr<Tree> make();
    /// The object of a record from the heap; takes the record over where there is none yet.
    static std::shared_ptr<Tree> of(DATAstruct* record);

    static void link(const std::shared_ptr<Tree>& self, std::shared_ptr<Tree> next);
    static void fill(const std::shared_ptr<Tree>& self, const std::vector<std::shared_ptr<Tree>>& records);
    py::object slots();

    /// After a call: holds exactly the records that are in the slots now.
    void settle_tree();
    /// Forgets children and list, which belong to those who hold them.
    void part_company();
    /// A sentence that says what is wrong with this array or one below it, or nothing.
    std::string misfit_below() const;
    /// Slots of its capacity; 0 unless it is an array of arrays.
    size_t slot_count() const;

private:
    bool reaches(const Tree& wanted) const;
};

/// A status record: arrays that are part of it are made objects when they are asked for.
class Whole : public std::enable_shared_from_this<Whole> {
public:
    int users = 0;
    std::thread::id user; ///< the thread of the call that works on it

    Whole() = default;
    Whole(const Whole&) = delete;
    Whole& operator=(const Whole&) = delete;
    virtual ~Whole() = default;

    /// An object that keeps the status alive; None for null.
    py::object part(DATAstruct* record, bool is_locked);
    py::object part(Data* record, bool is_locked);

    /// Before a call works on it: takes what it borrows, and refuses what the library cannot work on.
    virtual void look(Call&) {}

    /// After a call that has worked on it: takes what the library has left in it.
    virtual void take_back() {}

    /// Before the library may free or move the buffers of parts.
    void parts_stand_apart();

protected:
    /// Before the library releases the parts: views keep what they look at, and the objects are dead.
    void parts_die();
    /// The same for one of them.
    void part_dies(void* record);

private:
    std::unordered_map<void*, std::shared_ptr<Tree>> trees_;
    std::unordered_map<void*, std::shared_ptr<Table>> tables_;
};

/// What the library does with a record: it reads it, writes its elements, may give it another buffer, may do so
/// whatever its sizes, or empties it, so that its buffers, children and list go to those who hold them.
enum class Use { read, write, shape, remake, empty };

/// One call of the library: looks at its arguments before, and puts in order what it has changed after.
class Call {
public:
    explicit Call(const char* function) : function_(function) {}
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;
    ~Call();

    const char* function() const { return function_; }
    [[noreturn]] void refuse(const std::string& why) const;

    /// An argument and its use.
    template <class Object>
    auto* take(const std::shared_ptr<Object>& object, const char* argument, Use use)
    {
        require(object != nullptr, argument);
        kept_.push_back(object);
        return take(*object, argument, use);
    }
    template <class Object>
    auto* take_optional(const std::shared_ptr<Object>& object, const char* argument, Use use)
    {
        return object == nullptr ? nullptr : take(object, argument, use);
    }
    /// A status; a call that `may_nest` may come from a function that the library calls on its behalf.
    void use(const std::shared_ptr<Whole>& status, const char* argument, bool may_nest = false);

    /// Calls the library without the interpreter lock, and raises what a Python function has raised on the way.
    template <class Work>
    auto run(Work&& work)
    {
        const auto before = forget_raised();
        if constexpr (std::is_void_v<decltype(work())>) {
            {
                const py::gil_scoped_release others_may_run;
                work();
            }
            settle();
            raise_again(before);
        } else {
            const auto result = [&] {
                const py::gil_scoped_release others_may_run;
                return work();
            }();
            settle();
            raise_again(before);
            return result;
        }
    }

private:
    const char* const function_;
    std::vector<std::shared_ptr<void>> kept_; // what the marks are on
    std::vector<int*> marks_;
    std::vector<Table*> tables_;
    std::vector<Tree*> trees_;
    std::vector<Whole*> statuses_;

    void require(bool holds, const char* argument) const;
    void mark(int& users, const char* argument);
    Data* take(Table& table, const char* argument, Use use);
    DATAstruct* take(Tree& tree, const char* argument, Use use);
    template <class Object>
    void prepare(Object& object, const char* argument, Use use);
    void settle();
    static std::exception_ptr forget_raised();
    static void raise_again(const std::exception_ptr& before);
};

/// Keeps the exception that is being handled for the end of the call that Python was called from; within `catch`.
void keep_raised();
bool has_raised();

/// Numbers from anything that NumPy takes, exactly `count` of them.
py::array_t<double> numbers(const py::handle& given, py::ssize_t count, const char* function, const char* argument);

/// Numbers that the library writes: `given` itself, which has to be an array of doubles of exactly that shape, or, for
/// None, a new one of zeros.
py::array_t<double> place(const py::handle& given, const std::vector<py::ssize_t>& shape, const char* function,
                          const char* argument);

/// A record that a status borrows: the object, and what the status points to.
template <class Object>
std::shared_ptr<Object> borrowable(std::shared_ptr<Object> object, const char* field)
{
    if (object != nullptr && object->is_part)
        throw py::value_error(std::string(field) + ": this record is part of a status");
    return object;
}

/// The comment that the headers have for a function or record.
const char* described(const char* name);

void add_records(py::module_& m);
void add_frame(py::module_& m);
void add_math(py::module_& m);
void add_arrays(py::module_& m);
void add_path(py::module_& m);
void add_border(py::module_& m);
void add_equation(py::module_& m);
void add_preserve(py::module_& m);
void add_ray(py::module_& m);
void add_exchange(py::module_& m);

} // namespace korvale::raw
