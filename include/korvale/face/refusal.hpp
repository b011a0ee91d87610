#pragma once

#include <optional>

#include "points.hpp"

namespace korvale {

/// An equation that is refused: `what()` quotes it and says which word, where, and why.
class EquationError : public Error {
public:
    /// `text` is refused from character `place` on, where `word` stands.
    EquationError(std::string_view text, std::size_t place, std::string_view word, std::string_view why)
        : Error("Equations::add", "text", "be an equation",
                "\"" + std::string(text) + "\" is refused at character " + detail::text_of(place + 1) + ": " +
                    std::string(why)),
          place_(place), word_(word)
    {
    }

    /// Where the trouble starts, counted in characters from 0.
    std::size_t place() const noexcept { return place_; }

    /// The word or sign there; empty at the end of the text.
    const std::string& word() const noexcept { return word_; }

private:
    std::size_t place_;
    std::string word_;
};

namespace detail {

/// Why a text was refused.
struct Refusal {
    std::size_t place;
    std::string word, why;
};

/// Reads a text that the library has refused once more, word by word as the library does, to say why.
class RefusalFinder {
public:
    RefusalFinder(EquationSystem& system, std::string_view text) : system_(system), text_(text) {}

    Refusal find()
    {
        const std::size_t equals = text_.find('=');
        if (equals == std::string_view::npos)
            return {text_.size(), "", "there is no \"=\""};
        if (!check_target(equals))
            return *first_;
        scan(equals + 1);
        if (!open_.empty())
            note(open_.back(), "(", "the parenthesis is not closed");
        if (expects_operand_ && !last_word_.empty() && !first_)
            note(text_.size(), "", "an operand is missing after " + quoted(last_word_));
        if (!first_ && items_ > 100)
            note(text_.size(), "", "it has more than 100 numbers, names and operators");
        if (!first_)
            note(text_.size(), "", "it nests deeper than 51 operators or functions, or operators lack operands");
        return *first_;
    }

private:
    static constexpr std::size_t kLongestName = 12;

    static bool is_letter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
    static bool is_number_part(char c) { return (c >= '0' && c <= '9') || c == '.'; }
    static bool is_space(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
    static std::string quoted(std::string_view word) { return "\"" + std::string(word) + "\""; }

    void note(std::size_t place, std::string_view word, std::string why)
    {
        if (!first_)
            first_ = {place, std::string(word), std::move(why)};
    }

    bool check_target(std::size_t equals)
    {
        std::size_t first = 0;
        while (first < equals && is_space(text_[first]))
            ++first;
        std::size_t last = first;
        while (last < equals && !is_space(text_[last]))
            ++last;
        std::string word(text_.substr(first, last - first));
        if (EqLookupVariable(&system_, word.data()) >= 0)
            return true;
        if (word.empty())
            note(equals, "=", "the variable before \"=\" is missing");
        else
            note(first, word, quoted(word) + " is not a variable");
        return false;
    }

    enum class Kind { unknown, variable, no_argument, one_argument, two_arguments };

    /// What a name is in an equation. Of several functions of one name that of one argument comes first.
    Kind kind_of(std::string word)
    {
        bool none = false, one = false, two = false;
        for (std::int32_t f = 0; f < system_.funcs->count; ++f) {
            if (word != reinterpret_cast<const char*>(system_.func_names->bvals) + 13 * std::ptrdiff_t{f})
                continue;
            const std::int32_t arguments = system_.func_nargs->ivals[f];
            (arguments == 0 ? none : arguments == 1 ? one : two) = true;
        }
        if (one)
            return Kind::one_argument;
        if (none)
            return Kind::no_argument;
        if (two)
            return Kind::two_arguments;
        return EqLookupVariable(&system_, word.data()) >= 0 ? Kind::variable : Kind::unknown;
    }

    void operand(std::size_t place, std::string_view word)
    {
        if (!expects_operand_)
            note(place, word, "there is no operator between " + quoted(last_word_) + " and " + quoted(word));
        expects_operand_ = false;
        ++items_;
    }

    void binary(std::size_t place, std::string_view word)
    {
        if (expects_operand_ && word != ",")
            note(place, word, "an operand is missing before " + quoted(word));
        expects_operand_ = true;
        ++items_;
    }

    void name(std::size_t place, std::string_view word)
    {
        switch (kind_of(std::string(word))) {
        case Kind::unknown:
            note(place, word, quoted(word) + " is neither a variable nor a function");
            return;
        case Kind::one_argument:
            if (!expects_operand_)
                note(place, word, "there is no operator between " + quoted(last_word_) + " and " + quoted(word));
            expects_operand_ = true;
            ++items_;
            return;
        case Kind::two_arguments:
            // a F b, or F(a, b): then its operands stand one after the other
            if (expects_operand_)
                spare_operators_ += 1;
            expects_operand_ = true;
            ++items_;
            return;
        default:
            operand(place, word);
        }
    }

    void sign(std::size_t place, char c)
    {
        const std::string_view word = text_.substr(place, 1);
        switch (c) {
        case '+':
        case '*':
        case '/':
        case '^':
            binary(place, word);
            break;
        case '-':
            expects_operand_ = true;
            ++items_;
            break;
        case '(':
            if (!expects_operand_)
                note(place, word, "there is no operator between " + quoted(last_word_) + " and \"(\"");
            open_.push_back(place);
            break;
        case ')':
            if (open_.empty())
                note(place, word, "there is no \"(\" to this parenthesis");
            else
                open_.pop_back();
            expects_operand_ = false;
            break;
        default: // separates; between the operands of F(a, b) it stands where the operator would
            if (spare_operators_ > 0 && !expects_operand_) {
                spare_operators_ -= 1;
                expects_operand_ = true;
            }
            return;
        }
        last_word_ = word;
    }

    /// "1e5" or "0x10": the letter before `second` only separates, so two numbers follow each other.
    void look_for_number_like_word(std::size_t first, std::size_t second)
    {
        std::size_t last = second;
        while (last < text_.size() && is_number_part(text_[last]))
            ++last;
        const std::string_view word = text_.substr(first, last - first);
        if (last > second)
            note(first, word, quoted(word) + " is no number: numbers have digits and a point, but no letters");
    }

    void scan(std::size_t at)
    {
        while (at < text_.size()) {
            std::size_t last = at + 1;
            if (is_letter(text_[at])) {
                while (last < text_.size() && is_letter(text_[last]) && last - at < kLongestName)
                    ++last;
                name(at, text_.substr(at, last - at));
                last_word_ = text_.substr(at, last - at);
            } else if (is_number_part(text_[at])) {
                while (last < text_.size() && is_number_part(text_[last]))
                    ++last;
                operand(at, text_.substr(at, last - at));
                last_word_ = text_.substr(at, last - at);
                if (last < text_.size() && is_letter(text_[last])) {
                    ++last; // the character that ends a number is examined as an operator, which a letter is not
                    look_for_number_like_word(at, last);
                }
            } else {
                sign(at, text_[at]);
            }
            at = last;
        }
    }

    EquationSystem& system_;
    std::string_view text_;
    std::optional<Refusal> first_;
    std::vector<std::size_t> open_;
    std::string_view last_word_;
    bool expects_operand_ = true;
    int spare_operators_ = 0;
    int items_ = 1;
};

} // namespace detail
} // namespace korvale
