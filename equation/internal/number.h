#pragma once

namespace korvale::equation {

/// The value of the longest decimal number at the start of [first, last), which holds digits and points only; 0.0 where
/// there is none. Correctly rounded, whatever the locale.
double read_number(const char* first, const char* last);

} // namespace korvale::equation
