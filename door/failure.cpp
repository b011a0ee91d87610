#include "door/internal/failure.h"

namespace korvale::door {

Text counted(int64_t n, std::string_view noun)
{
    Text text;
    text << n << " " << noun << (n == 1 ? "" : "s");
    return text;
}

Text text_of_point(const double* p)
{
    Text text;
    text << "(" << p[0] << ", " << p[1] << ", " << p[2] << ")";
    return text;
}

Refusal::Refusal(std::string_view argument, std::string_view wanted, std::string_view given) : error{}
{
    error.status = KORVALE_BAD_ARGUMENT;
    error.place = -1;
    put(error.argument, argument);
    put(error.wanted, wanted);
    put(error.given, given);
}

Refusal::Refusal(int32_t place, std::string_view word, std::string_view given)
    : Refusal("text", "be an equation", given)
{
    error.status = KORVALE_BAD_EQUATION;
    error.place = place;
    put(error.word, word);
}

korvale_status tell(const Refusal& refusal, const char* function, korvale_error* error)
{
    const auto status = static_cast<korvale_status>(refusal.error.status);
    if (error == nullptr)
        return status;
    *error = refusal.error;
    put(error->function, function);
    Text sentence;
    sentence << error->function << ": " << error->argument << " must " << error->wanted << ", but " << error->given;
    put(error->text, sentence);
    return status;
}

korvale_status tell(korvale_status status, std::string_view text, const char* function, korvale_error* error)
{
    if (error == nullptr)
        return status;
    *error = korvale_error{};
    error->status = status;
    error->place = -1;
    put(error->function, function);
    Text sentence;
    sentence << function << ": " << text;
    put(error->text, sentence);
    return status;
}

} // namespace korvale::door
