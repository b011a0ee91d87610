// Reads the text of an equation once more than the parser does, word by word and before it, to say what is wrong with
// it. What the parser passes over is refused as well: characters and numbers that the language does not have, operands
// that are missing, and a function of two arguments before its operands where it would bind others than it shows.
//
// Of several reasons the first in the text is told.
#include "door/internal/refusal.h"

#include <algorithm>
#include <optional>

#include "door/internal/heap.h"
#include "door/internal/quoted.h"
#include "door/internal/spellings.h"
#include "equation/internal/functions.h"
#include "equation/internal/registry.h"
#include "equation/parse.h"

namespace korvale::door {

using namespace korvale::equation;

namespace {

/// Throws the refusal with as much of the text as there is room for beside the reason.
[[noreturn]] void refuse(std::string_view text, size_t place, std::string_view word, std::string_view why)
{
    Text reason;
    reason << "\" is refused at character " << place + 1 << ": " << why;
    const size_t room = sizeof korvale_error::given - 2 - std::string_view(reason).size();
    Text given;
    given << "\"" << std::string_view(part_around(text, place, room)) << std::string_view(reason);
    constexpr size_t kLongestWord = sizeof korvale_error::word - 4; // "..." and the end follow
    throw Refusal(static_cast<int32_t>(std::min<size_t>(place, INT32_MAX)), shortened(word, kLongestWord), given);
}

enum class Kind { unknown, variable, no_argument, one_argument, two_arguments };

/// What has been read since the last parenthesis, and of a function of two arguments before its operands since the
/// last of its signs.
struct Group {
    size_t place;          ///< of its parenthesis
    int32_t function = -1; ///< of two arguments, whose operands these are
    bool has_comma = false;
    bool has_operator = false;   ///< between two operands
    int last_priority = -1;      ///< of the last operator, as it waits
    int function_priority = 100; ///< of a function of two arguments that still waits behind its operands
};

class Reader {
public:
    Reader(const EquationSystem& es, std::string_view text)
        : functions_(functions_of(es)), variables_(variables_of(es)), text_(text)
    {
        groups_.push_back({0});
    }

    /// Throws where anything is wrong, and else returns the number of items.
    int32_t read()
    {
        const size_t equals = text_.find('=');
        if (equals == std::string_view::npos)
            refuse(text_, text_.size(), "", "there is no \"=\"");
        read_target(equals);
        last_word_ = text_.substr(equals, 1);
        if (text_.substr(equals).starts_with("=="))
            strange_sign(equals);
        for (size_t at = equals + 1; at < text_.size() && !first_;)
            at = word(at);
        if (!first_ && groups_.size() > 1)
            note(groups_.back().place, "(", "the parenthesis is not closed");
        if (!first_ && expects_operand_)
            note(text_.size(), "", Text() << "an operand is missing after " << quoted(last_word_));
        if (first_)
            refuse(text_, first_->place, first_->word, first_->why);
        return items_;
    }

private:
    struct Reason {
        size_t place;
        std::string_view word;
        Text why;
    };

    void note(size_t place, std::string_view word, const Text& why)
    {
        if (!first_)
            first_ = {place, word, why};
    }
    void note(size_t place, std::string_view word, std::string_view why) { note(place, word, Text() << why); }

    size_t skip(size_t at, bool (*is_part)(char), bool wanted = true) const
    {
        while (at < text_.size() && is_part(text_[at]) == wanted)
            ++at;
        return at;
    }
    size_t skip_spaces(size_t at) const { return skip(at, is_space); }
    bool is_at(size_t at, char c) const { return at < text_.size() && text_[at] == c; }

    // --- Before the "=" ---

    void read_target(size_t equals)
    {
        const size_t first = skip_spaces(0), last = std::min(equals, skip(first, is_space, false));
        const std::string_view name = text_.substr(first, std::max(first, last) - first);
        if (first >= equals)
            note(equals, "=", "the variable before \"=\" is missing");
        else if (is_variable(name))
            read_before_equals(last, equals);
        else if (const size_t end = skip(first, is_letter); is_variable(text_.substr(first, end - first)) &&
                                                            kBeforeEquals.find(text_[end]) != std::string_view::npos)
            read_before_equals(end, equals); // "x+=" and the like
        else
            note(first, name, Text() << quoted(name) << " is not a variable" << advice_for(name));
    }

    static constexpr std::string_view kBeforeEquals = "+-*/^:!<>";

    /// What stands between the variable and the "=".
    void read_before_equals(size_t at, size_t equals)
    {
        at = skip_spaces(at);
        if (at >= equals)
            return;
        if (at + 1 == equals && std::string_view("+-*/^").find(text_[at]) != std::string_view::npos) {
            const std::string_view name =
                text_.substr(skip_spaces(0), skip(skip_spaces(0), is_letter) - skip_spaces(0));
            const std::string_view operation = text_.substr(at, 2);
            note(at, operation,
                 Text() << quoted(operation) << " is no sign of equations: write " << name << " = " << name << " "
                        << operation.substr(0, 1));
        } else if (at + 1 == equals && std::string_view(":!<>").find(text_[at]) != std::string_view::npos) {
            strange_sign(at);
        } else {
            const size_t end = is_letter(text_[at]) ? skip(at, is_letter) : at + first_character(text_.substr(at));
            note(at, text_.substr(at, end - at), "only a variable stands before the \"=\"");
        }
    }

    // --- Words ---

    bool is_variable(std::string_view name) const
    {
        return !name.empty() && variables_.find(Word{name.data(), name.size()}) >= 0;
    }

    /// What a name is in an equation. Of several functions of one name that of one argument comes first.
    Kind kind_of(std::string_view name, int32_t& function) const
    {
        const NamedFunctions named = functions_.find(NamePattern({name.data(), name.size()}));
        function = named.binary;
        if (named.unary >= 0)
            return Kind::one_argument;
        if (named.no_arg >= 0)
            return Kind::no_argument;
        if (named.binary >= 0)
            return Kind::two_arguments;
        return is_variable(name) ? Kind::variable : Kind::unknown;
    }

    Text advice_for(std::string_view name) const
    {
        Text advice;
        if (const std::string_view known = spelling_of(functions_, variables_, name); !known.empty())
            advice << ": write " << known << ", capitals count";
        else if (const std::string_view other = advice_for_name(name); !other.empty())
            advice << ": " << other;
        else if (const std::string_view meant = swapped_spelling_of(functions_, variables_, name); !meant.empty())
            advice << ": write " << meant;
        return advice;
    }

    /// Reads the word at `at`; returns where the next one begins.
    size_t word(size_t at)
    {
        if (is_letter(text_[at]))
            return name(at);
        if (is_number_part(text_[at]))
            return number(at);
        if (is_space(text_[at]))
            return at + 1;
        return sign(at);
    }

    void operand(size_t place, std::string_view word)
    {
        require_operator_before(place, word);
        expects_operand_ = false;
        after_prefix_ = false;
        ++items_;
    }

    void require_operator_before(size_t place, std::string_view word)
    {
        if (!expects_operand_)
            note(place, word,
                 Text() << "there is no operator between " << quoted(last_word_) << " and " << quoted(word));
    }

    void prefix(size_t place, std::string_view word)
    {
        require_operator_before(place, word);
        expects_operand_ = true;
        after_prefix_ = true;
        ++items_;
    }

    /// An operator between two operands.
    void binary(size_t place, std::string_view word, int code)
    {
        Group& group = groups_.back();
        if (expects_operand_)
            note(place, word, Text() << "an operand is missing before " << quoted(word));
        else if (op_icp(code) > group.function_priority)
            refuse_order(place, word);
        group.has_operator = true;
        group.last_priority = op_isp(code);
        group.function_priority = 100;
        expects_operand_ = true;
        ++items_;
    }

    void refuse_order(size_t place, std::string_view word)
    {
        note(place, word, "a function of two arguments stands between them: write (a ADD b) for ADD(a, b)");
    }

    size_t name(size_t at)
    {
        const size_t end = skip(at, is_letter), last = std::min(end, at + kLongestName);
        const std::string_view word = text_.substr(at, last - at);
        const std::string_view with_digits = text_.substr(at, skip(end, is_number_part) - at);
        int32_t function = -1;
        const Kind kind = kind_of(word, function);
        if (const std::string_view other = advice_for_name(with_digits); with_digits != word && !other.empty())
            note(at, with_digits, Text() << quoted(with_digits) << " is no function: " << other); // "log10"
        else if (kind == Kind::unknown)
            note(at, word, Text() << quoted(word) << " is neither a variable nor a function" << advice_for(word));
        else if (last < end)
            note(at, text_.substr(at, end - at), "names have at most 12 letters");
        else if ((kind == Kind::one_argument || kind == Kind::two_arguments) && end < text_.size() &&
                 is_number_part(text_[end]))
            note(at, with_digits, Text() << quoted(with_digits) << " is no name: names have letters only");
        size_t next = end;
        if (kind == Kind::one_argument)
            prefix(at, word);
        else if (kind == Kind::two_arguments && expects_operand_ && is_at(skip_spaces(end), '('))
            next = open_call(at, word, function);
        else if (kind == Kind::two_arguments)
            binary(at, word, function);
        else
            operand(at, word);
        last_word_ = word;
        if (kind == Kind::no_argument && is_at(skip_spaces(end), '(')) // RAND() is RAND
            if (const size_t close = skip_spaces(skip_spaces(end) + 1); is_at(close, ')'))
                next = close + 1;
        return next;
    }

    /// A function of two arguments before its operands. The parser makes it wait for whatever comes, as if it stood
    /// between them.
    size_t open_call(size_t at, std::string_view word, int32_t function)
    {
        Group& group = groups_.back();
        if (after_prefix_ || group.last_priority >= op_icp(function))
            refuse_order(at, word);
        ++items_;
        after_prefix_ = false;
        const size_t parenthesis = skip_spaces(at + word.size());
        groups_.push_back({parenthesis, function});
        return parenthesis + 1;
    }

    size_t number(size_t at)
    {
        const size_t last = skip(at, is_number_part);
        const std::string_view word = text_.substr(at, last - at);
        if (std::count(word.begin(), word.end(), '.') > 1 || word == ".")
            note(at, word, Text() << quoted(word) << " is no number");
        if (last < text_.size() && is_letter(text_[last]))
            refuse_letters_after(at, last);
        operand(at, word);
        last_word_ = word;
        return last;
    }

    /// "1e-3", "0x10" or "2x". The parser passes over the letter.
    void refuse_letters_after(size_t first, size_t letters)
    {
        const size_t end = skip(letters, is_letter);
        const std::string_view number = text_.substr(first, letters - first);
        const std::string_view name = text_.substr(letters, end - letters);
        const size_t last = skip(end, is_number_part);
        constexpr const char* kNoLetters = " is no number: numbers have digits and a point, but no letters";
        if (name == "e" || name == "E") {
            const bool has_sign = is_at(end, '-') || is_at(end, '+');
            const size_t digits = end + (has_sign ? 1 : 0), digits_end = skip(digits, is_number_part);
            if (digits_end > digits) {
                const Text plain = without_exponent(number, text_.substr(end, digits_end - end));
                const std::string_view all = text_.substr(first, digits_end - first);
                Text why;
                why << quoted(all) << kNoLetters;
                if (!std::string_view(plain).empty())
                    why << "; write " << std::string_view(plain);
                else
                    why << "; write " << quoted_part(number) << " * 10 ^ "
                        << quoted_part(text_.substr(end, digits_end - end));
                note(first, all, why);
                return;
            }
        }
        int32_t function = -1;
        const std::string_view all = text_.substr(first, last - first);
        const Kind kind = name.size() <= kLongestName ? kind_of(name, function) : Kind::unknown;
        if (kind == Kind::unknown || last > end)
            note(first, all, Text() << quoted(all) << kNoLetters);
        else if (kind == Kind::two_arguments)
            note(first, all, Text() << quoted(all) << " has no space: write " << quoted_part(number) << " " << name);
        else
            note(first, all,
                 Text() << quoted(all) << " has no operator: write " << quoted_part(number) << " * " << name);
    }

    // --- Signs ---

    size_t sign(size_t at)
    {
        const std::string_view rest = text_.substr(at), word = rest.substr(0, 1);
        switch (word[0]) {
        case '+':
            binary(at, word, kAdd);
            break;
        case '*':
            if (rest.starts_with("**") && !expects_operand_)
                return strange_sign(at);
            binary(at, word, kMultiply);
            break;
        case '/':
            binary(at, word, kDivide);
            break;
        case '^':
            binary(at, word, kPower);
            break;
        case '-':
            minus(at, word);
            break;
        case '(':
            require_operator_before(at, word);
            groups_.push_back({at});
            after_prefix_ = false;
            break;
        case ')':
            close(at, word);
            break;
        case ',':
            comma(at, word);
            break;
        default:
            return strange_sign(at);
        }
        last_word_ = word;
        return at + 1;
    }

    void minus(size_t at, std::string_view word)
    {
        if (!expects_operand_)
            binary(at, word, kSubtract);
        else if (groups_.back().has_comma && last_word_ == ",") // which the parser takes for one between the operands
            refuse_order(at, word);
        else
            prefix(at, word);
    }

    void close(size_t at, std::string_view word)
    {
        const Group group = groups_.back();
        if (groups_.size() == 1) {
            note(at, word, "there is no \"(\" to this parenthesis");
            return;
        }
        if (expects_operand_)
            note(at, word, Text() << "an operand is missing before " << quoted(word));
        else if (group.function >= 0 && !group.has_comma)
            note(at, word, Text() << "an operand is missing before " << quoted(word));
        groups_.pop_back();
        expects_operand_ = false;
        after_prefix_ = false;
        if (group.function >= 0) {
            groups_.back().has_operator = true;
            groups_.back().function_priority = op_isp(group.function);
        }
    }

    void comma(size_t at, std::string_view word)
    {
        Group& group = groups_.back();
        if (group.function < 0 || group.has_comma) {
            if (!expects_operand_ && at > 0 && is_number_part(text_[at - 1]) && at + 1 < text_.size() &&
                is_number_part(text_[at + 1]))
                note(at, word, "a number has a point: write 1.5 for 1,5");
            else
                note(at, word, "a comma stands only between the two operands of a function");
        } else if (expects_operand_) {
            note(at, word, Text() << "an operand is missing before " << quoted(word));
        } else if (group.has_operator) {
            refuse_order(at, word);
        }
        group.has_comma = true;
        group.has_operator = false;
        group.last_priority = -1;
        group.function_priority = 100;
        expects_operand_ = true;
        after_prefix_ = false;
    }

    /// A sign that the language does not have.
    size_t strange_sign(size_t at)
    {
        const std::string_view rest = text_.substr(at);
        if (const Advice* const known = advice_for_sign(rest); known != nullptr) {
            note(at, rest.substr(0, known->sign.size()),
                 Text() << quoted(known->sign) << " is no sign of equations: " << known->text);
            return at + known->sign.size();
        }
        const std::string_view word = rest.substr(0, first_character(rest));
        const bool is_plain = word[0] >= ' ' && word[0] < 0x7f;
        note(at, word,
             Text() << quoted(word)
                    << (is_plain ? " is no sign of equations" : " is no character of equations, which are ASCII"));
        return at + word.size();
    }

    const Functions functions_;
    const Variables variables_;
    std::string_view text_;
    std::optional<Reason> first_;
    Vector<Group> groups_;
    std::string_view last_word_;
    bool expects_operand_ = true;
    bool after_prefix_ = false;
    int32_t items_ = 1;
};

} // namespace

int32_t require_whole_equation(const EquationSystem& record, std::string_view text)
{
    return Reader(record, text).read();
}

void refuse_beyond_limits(std::string_view text, int32_t items)
{
    Text why;
    if (items > kMostItems)
        why << "it has more than " << kMostItems << " numbers, names and operators";
    else
        why << "it nests deeper than " << kMostWaiting << " operators or functions, or operators lack operands";
    refuse(text, text.size(), "", why);
}

} // namespace korvale::door
