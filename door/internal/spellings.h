#pragma once

#include "door/internal/failure.h"
#include "equation/internal/registry.h"

// What to write instead of signs, names and numbers that equations do not have and people know from elsewhere.
namespace korvale::door {

struct Advice {
    std::string_view sign, text;
};

/// The sign at the beginning of the text, and what to write; null for none that is known.
const Advice* advice_for_sign(std::string_view text);

/// What to write for a name that other languages have, in whatever capitals; else empty.
std::string_view advice_for_name(std::string_view name);

/// The name of the system that differs in capitals alone; else empty.
std::string_view spelling_of(const equation::Functions& functions, const equation::Variables& variables,
                             std::string_view name);

/// The name of the system, of 3 letters or more, that differs by a swap of two neighbouring letters; else empty.
std::string_view swapped_spelling_of(const equation::Functions& functions, const equation::Variables& variables,
                                     std::string_view name);

/// What to write for digits `whole.fraction` times ten to the `exponent`, where that is short; else empty.
Text without_exponent(std::string_view number, std::string_view exponent);

} // namespace korvale::door
