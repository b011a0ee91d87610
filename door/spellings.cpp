#include "door/internal/spellings.h"

#include <algorithm>
#include <cstring>

namespace korvale::door {

using namespace korvale::equation;

namespace {

/// Signs that people write elsewhere; longer ones first.
constexpr Advice kSigns[] = {
    {"**", "write ^"},
    {"==", "write one \"=\""},
    {":=", "write ="},
    {"&&", "there is no logic"},
    {"||", "there is no logic"},
    {"<=", "there are no comparisons"},
    {">=", "there are no comparisons"},
    {"!=", "there are no comparisons"},
    {"<>", "there are no comparisons"},
    {"<", "there are no comparisons"},
    {">", "there are no comparisons"},
    {"=", "it stands once, after the variable that is changed"},
    {"|", "for an absolute value write SQRT(x * x)"},
    {"%", "for per cent write / 100, for a remainder add a function"},
    {"!", "there are no factorials and there is no logic"},
    {"&", "there is no logic"},
    {"~", "there is no logic"},
    {"?", "there are no conditions"},
    {":", "there are no conditions"},
    {"[", "write ("},
    {"]", "write )"},
    {"{", "write ("},
    {"}", "write )"},
    {";", "add equations one by one"},
    {"#", "there are no comments"},
    {"_", "names have letters only"},
    {"\u00b2", "write ^ 2"},                // superscript two
    {"\u00b3", "write ^ 3"},                // superscript three
    {"\u221a", "write SQRT(x)"},            // root
    {"\u03c0", "write PI"},                 // pi
    {"\u00d7", "write *"},                  // times
    {"\u00b7", "write *"},                  // middle dot
    {"\u22c5", "write *"},                  // dot operator
    {"\u00f7", "write /"},                  // division
    {"\u2215", "write /"},                  // division slash
    {"\u2044", "write /"},                  // fraction slash
    {"\u2212", "write -"},                  // minus
    {"\u2013", "write -"},                  // en dash
    {"\u2014", "write -"},                  // em dash
    {"\u00bc", "write 0.25"},               // a quarter
    {"\u00bd", "write 0.5"},                // a half
    {"\u00be", "write 0.75"},               // three quarters
    {"\u00b0", "write * PI / 180"},         // degree
    {"\u2264", "there are no comparisons"}, // less or equal
    {"\u2265", "there are no comparisons"}, // greater or equal
    {"\u2260", "there are no comparisons"}, // not equal
    {"\u00a0", "write a plain space"},      // no-break space
    {"\u2009", "write a plain space"},      // thin space
    {"\u202f", "write a plain space"},      // narrow no-break space
};

/// Names that people know from elsewhere, in small letters.
constexpr Advice kNames[] = {
    {"ln", "write LOG(x)"},
    {"log10", "write LOG(x) / LOG(10)"},
    {"log2", "write LOG(x) / LOG(2)"},
    {"pow", "write x ^ y"},
    {"sqr", "write x * x"},
    {"cbrt", "write x ^ (1 / 3)"},
    {"hypot", "write SQRT(x * x + y * y)"},
    {"abs", "write SQRT(x * x)"},
    {"fabs", "write SQRT(x * x)"},
    {"sign", "write x / SQRT(x * x)"},
    {"sgn", "write x / SQRT(x * x)"},
    {"max", "write (a + b + SQRT((a - b) * (a - b))) / 2"},
    {"fmax", "write (a + b + SQRT((a - b) * (a - b))) / 2"},
    {"maximum", "write (a + b + SQRT((a - b) * (a - b))) / 2"},
    {"min", "write (a + b - SQRT((a - b) * (a - b))) / 2"},
    {"fmin", "write (a + b - SQRT((a - b) * (a - b))) / 2"},
    {"minimum", "write (a + b - SQRT((a - b) * (a - b))) / 2"},
    {"mix", "write a + (b - a) * t"},
    {"lerp", "write a + (b - a) * t"},
    {"sine", "write SIN(x)"},
    {"cosine", "write COS(x)"},
    {"tangent", "write TAN(x)"},
    {"sinh", "write (EXP(x) - EXP(0 - x)) / 2"},
    {"cosh", "write (EXP(x) + EXP(0 - x)) / 2"},
    {"tanh", "write 1 - 2 / (EXP(2 * x) + 1)"},
    {"arcsin", "write ASIN(x)"},
    {"arccos", "write ACOS(x)"},
    {"arctan", "write ATAN(x)"},
    {"atan2", "write (y ANGLE x)"},
    {"arctan2", "write (y ANGLE x)"},
    {"radians", "write x * PI / 180"},
    {"degrees", "write x * 180 / PI"},
    {"random", "write RAND"},
    {"rnd", "write RAND"},
    {"floor", "add a function of that name"},
    {"ceil", "add a function of that name"},
    {"round", "add a function of that name"},
    {"trunc", "add a function of that name"},
    {"int", "add a function of that name"},
    {"mod", "add a function of that name"},
    {"fmod", "add a function of that name"},
    {"clamp", "add a function of that name"},
    {"step", "add a function of that name"},
    {"if", "there are no conditions"},
    {"where", "there are no conditions"},
    {"and", "there is no logic"},
    {"or", "there is no logic"},
    {"not", "there is no logic"},
};

char in_small(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool is_same_but_for_capitals(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return in_small(x) == in_small(y); });
}

/// Whether two neighbouring letters change places between the names.
bool is_same_but_for_a_swap(std::string_view a, std::string_view b)
{
    const auto differs = [&](size_t i) { return in_small(a[i]) != in_small(b[i]); };
    if (a.size() != b.size())
        return false;
    size_t i = 0;
    while (i + 1 < a.size() && !differs(i))
        ++i;
    return i + 1 < a.size() && in_small(a[i]) == in_small(b[i + 1]) && in_small(a[i + 1]) == in_small(b[i]) &&
           is_same_but_for_capitals(a.substr(i + 2), b.substr(i + 2));
}

std::string_view name_at(const uint8_t* names, int32_t i)
{
    const char* const slot = reinterpret_cast<const char*>(names) + int64_t{i} * kNameBytes;
    return {slot, strnlen(slot, kLongestName)};
}

/// The first name of the system that is like another one, functions first; else empty.
template <class IsLike>
std::string_view find_name(const Functions& functions, const Variables& variables, std::string_view name,
                           IsLike is_like)
{
    for (int32_t f = 0; f < functions.named; ++f)
        if (is_like(name_at(functions.names, f), name))
            return name_at(functions.names, f);
    for (int32_t v = 0; v < variables.named; ++v)
        if (is_like(name_at(variables.names, v), name))
            return name_at(variables.names, v);
    return {};
}

} // namespace

const Advice* advice_for_sign(std::string_view text)
{
    const auto known =
        std::find_if(std::begin(kSigns), std::end(kSigns), [=](const Advice& a) { return text.starts_with(a.sign); });
    return known == std::end(kSigns) ? nullptr : known;
}

std::string_view advice_for_name(std::string_view name)
{
    for (const Advice& known : kNames)
        if (is_same_but_for_capitals(known.sign, name))
            return known.text;
    return {};
}

std::string_view spelling_of(const Functions& functions, const Variables& variables, std::string_view name)
{
    return find_name(functions, variables, name, is_same_but_for_capitals);
}

std::string_view swapped_spelling_of(const Functions& functions, const Variables& variables, std::string_view name)
{
    constexpr size_t kShortest = 3; // of two letters too many are others swapped. Chosen
    return name.size() < kShortest ? std::string_view() : find_name(functions, variables, name, is_same_but_for_a_swap);
}

Text without_exponent(std::string_view number, std::string_view exponent)
{
    const size_t point = std::min(number.find('.'), number.size());
    const bool is_negative = exponent.starts_with('-');
    exponent.remove_prefix(exponent.starts_with('-') || exponent.starts_with('+') ? 1 : 0);
    exponent.remove_prefix(std::min(exponent.find_first_not_of('0'), exponent.size()));
    Text text;
    if (exponent.size() > 2 || exponent.find('.') != std::string_view::npos || number.size() > 20 ||
        number.find('.', point + 1) != std::string_view::npos)
        return text;
    int64_t shift = 0;
    for (const char c : exponent)
        shift = 10 * shift + (c - '0');
    if (shift > 20)
        return text;
    char digits[24];
    size_t count = 0;
    for (const char c : number)
        if (c != '.')
            digits[count++] = c;
    const auto all = static_cast<int64_t>(count);
    const int64_t whole = static_cast<int64_t>(point) + (is_negative ? -shift : shift);
    char shown[64];
    size_t size = 0;
    for (int64_t i = std::min<int64_t>(whole - 1, 0); i < std::max(all, whole); ++i) {
        if (i == whole)
            shown[size++] = '.';
        shown[size++] = i >= 0 && i < all ? digits[i] : '0';
    }
    std::string_view plain(shown, size);
    while (plain.size() > 1 && plain[0] == '0' && plain[1] != '.')
        plain.remove_prefix(1);
    if (plain.find('.') != std::string_view::npos)
        while (plain.ends_with('0') || plain.ends_with('.')) {
            const bool was_point = plain.ends_with('.');
            plain.remove_suffix(1);
            if (was_point)
                break;
        }
    text << plain;
    return text;
}

} // namespace korvale::door
