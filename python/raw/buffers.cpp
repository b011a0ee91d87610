#include "buffers.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace korvale::raw {

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

template <class R>
void Buffers<R>::let_go()
{
    if (is_part || record == nullptr)
        return;
    for (int number = 0; number < kBuffers; ++number)
        leave(number);
    std::free(record);
}

template class Buffers<Data>;
template class Buffers<DATAstruct>;

} // namespace korvale::raw
