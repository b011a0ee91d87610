#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <utility>
#include <vector>

#include "platform/internal/large_pages.h"

// Memory of the door: from the C heap, like the library's, and std::bad_alloc where there is none.
namespace korvale::door {

template <class T>
struct HeapAllocator {
    using value_type = T;

    HeapAllocator() = default;
    template <class Other>
    HeapAllocator(const HeapAllocator<Other>&) // NOLINT: containers convert it
    {
    }

    T* allocate(size_t n)
    {
        void* const block = n <= SIZE_MAX / 2 / sizeof(T) ? platform::new_block(n * sizeof(T)) : nullptr;
        if (block == nullptr)
            throw std::bad_alloc();
        return static_cast<T*>(block);
    }
    void deallocate(T* block, size_t) { std::free(block); }

    friend bool operator==(const HeapAllocator&, const HeapAllocator&) { return true; }
};

template <class T>
using Vector = std::vector<T, HeapAllocator<T>>;

/// A block that is taken up by other elements again and again: it grows, but neither keeps nor clears what it holds.
template <class T>
class Block {
public:
    Block() = default;
    Block(Block&& other) noexcept : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)) {}
    Block& operator=(Block&& other) noexcept
    {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
        return *this;
    }
    ~Block() { std::free(data_); }

    /// Room for at least n elements.
    void make_room(size_t n)
    {
        if (n <= size_)
            return;
        T* const larger = HeapAllocator<T>().allocate(n);
        std::free(data_);
        data_ = larger;
        size_ = n;
    }

    T* data() const { return data_; }

    /// Hands the block over, to be released with `free`; there is none then.
    T* release()
    {
        size_ = 0;
        return std::exchange(data_, nullptr);
    }

private:
    T* data_ = nullptr;
    size_t size_ = 0;
};

/// A handle for the host: `new` and `delete` on the C heap.
///@{
template <class T, class... Arguments>
T* make_handle(Arguments&&... arguments)
{
    void* const block = HeapAllocator<T>().allocate(1);
    try {
        return new (block) T(std::forward<Arguments>(arguments)...);
    } catch (...) {
        std::free(block);
        throw;
    }
}

template <class T>
void free_handle(T* handle)
{
    if (handle == nullptr)
        return;
    handle->~T();
    std::free(handle);
}
///@}

/// A handle that is not yet the host's. A std::unique_ptr would do, but <memory> takes longer to compile than most of
/// what includes this.
template <class T>
class Handle {
public:
    explicit Handle(T* handle) : handle_(handle) {}
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle() { free_handle(handle_); }

    T& operator*() const { return *handle_; }
    T* release() { return std::exchange(handle_, nullptr); }

private:
    T* handle_;
};

} // namespace korvale::door
