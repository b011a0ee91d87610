#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "platform/internal/namespaces.h"

namespace korvale::platform {

/// Storage for `kCount` values inside a record; an empty one for 0.
template <class T, int64_t kCount>
struct Nearby {
    T values[kCount];
    T* get() { return values; }
};

template <class T>
struct Nearby<T, 0> {
    T* get() { return nullptr; }
};

/// Working memory of one call: `count` uninitialised values, freed on every path out. Up to kNearby values are stored
/// inside the object and so on the stack (small-buffer optimisation), more on the heap. Where the heap is exhausted
/// `exists()` is false: test it before use. A count of 0 or less always exists.
template <class T, int64_t kNearby = 0>
class Scratch {
public:
    explicit Scratch(int64_t count)
        : values_(count <= kNearby ? nearby_.get() : from_heap(count)), is_near_(count <= kNearby)
    {
    }
    ~Scratch()
    {
        if (!is_near_)
            std::free(values_);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    bool exists() const { return is_near_ || values_ != nullptr; }
    T* get() { return values_; }
    const T* get() const { return values_; }
    T& operator[](int64_t i) { return values_[i]; }
    const T& operator[](int64_t i) const { return values_[i]; }

private:
    static T* from_heap(int64_t count)
    {
        const bool fits = static_cast<uint64_t>(count) <= SIZE_MAX / 2 / sizeof(T);
        return fits ? static_cast<T*>(std::malloc(static_cast<size_t>(count) * sizeof(T))) : nullptr;
    }

    [[no_unique_address]] Nearby<T, kNearby> nearby_;
    T* values_;
    bool is_near_;
};

} // namespace korvale::platform
