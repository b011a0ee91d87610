#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace korvale::inside {

/// Working memory of one call: `count` uninitialised values from the heap, freed on every path out. Test `exists()`
/// before use; a count of 0 or less, and one beyond the heap, give none.
template <class T>
class Scratch {
public:
    explicit Scratch(int64_t count)
        : values_(count < 1 || static_cast<uint64_t>(count) > SIZE_MAX / 2 / sizeof(T)
                      ? nullptr
                      : static_cast<T*>(std::malloc(static_cast<size_t>(count) * sizeof(T))))
    {
    }
    ~Scratch() { std::free(values_); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    bool exists() const { return values_ != nullptr; }
    T* get() { return values_; }
    const T* get() const { return values_; }
    T& operator[](int64_t i) { return values_[i]; }
    const T& operator[](int64_t i) const { return values_[i]; }

private:
    T* values_;
};

} // namespace korvale::inside
