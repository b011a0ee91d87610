#pragma once

namespace korvale::border {

/// A borrowed array that is as constant as the record it stands in: a const one gives only pointers to const and cannot
/// be copied. So a function that takes a const record cannot write in the record's arrays either.
template <class T>
class Column {
public:
    Column() = default;
    Column(T* first) : first_(first) {}
    Column(Column&) = default;
    Column(Column&&) = default;
    Column& operator=(Column&) = default;
    Column& operator=(Column&&) = default;

    operator T*() { return first_; }
    operator const T*() const { return first_; }

private:
    T* first_ = nullptr;
};

} // namespace korvale::border
