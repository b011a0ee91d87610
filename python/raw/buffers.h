#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include "korvale.h"

/// @file
/// What all records of the library have as Python objects: buffers, and who owns them.
///
/// Memory has one owner at any time. A buffer belongs to its record, to the NumPy array that the record wraps, or, once
/// the record has let go of it, to the views that look at it; so no view ever outlives its memory. A record belongs to
/// the Python objects that name it: those that hold it, and the arrays in whose slots or lists it stands. A record that
/// is part of a status belongs to the status, and goes dead with it.
///
/// Everything here is called with the interpreter lock held.

namespace korvale::raw {

namespace py = pybind11;

class Whole;

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

protected:
    /// At the end of what this is a part of: frees the record and what it still has, unless a status owns them.
    void let_go();

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

/// Whether something besides Python may hold `self`, an argument of a call from Python: the Python object and the
/// argument are two. What nothing else holds stands in no slot and no list.
template <class Object>
bool is_held_elsewhere(const std::shared_ptr<Object>& self)
{
    return self.use_count() > 2;
}

} // namespace korvale::raw
