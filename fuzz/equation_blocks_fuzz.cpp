// Equations over columns through the C interface, beside `EqEvaluate` and `EqSystemEvaluate` row by row on a system
// alike: programs of any shape, columns and outputs of any stride, kind and place in one block of memory, so that they
// lie over each other in all ways, numbers with any bits, tables at any row. Memory, variables, tables and the random
// generator end up the same.
#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz/input.h"
#include "korvale.h"
#include "korvale_c.h"

using namespace korvale::fuzz;

namespace {

constexpr int64_t kBytes = 16384;
const char* const kNames[] = {"x", "y", "z", "w", "r", "s"}; ///< the last two are reserved

double half(const double* arguments, void*)
{
    return arguments[0] / 2;
}

/// A system, and the memory that its columns are in.
struct Side {
    korvale_equations* equations = nullptr;
    EquationSystem* es = nullptr;
    std::vector<char> memory = std::vector<char>(kBytes);

    Side()
    {
        require(korvale_equations_new(&equations, nullptr) == KORVALE_OK);
        require(korvale_equations_declare(equations, "x y z w", 0, nullptr) == KORVALE_OK);
        require(korvale_equations_declare(equations, "r s", 1, nullptr) == KORVALE_OK);
        require(korvale_equations_function(equations, "HALF", 1, half, nullptr, nullptr, nullptr) == KORVALE_OK);
        es = static_cast<EquationSystem*>(korvale_equations_record(equations));
    }
    ~Side() { korvale_equations_free(equations); }
    Side(const Side&) = delete;
    Side& operator=(const Side&) = delete;
};

std::string term_of(Input& in, int depth)
{
    static const char* const kLeaves[] = {"x", "z", "2.5", "r", "y", "0", "w", "s", "PI", "x", "z", "x"};
    static const char* const kOne[] = {"SIN", "SQRT", "LOG", "EXP", "ATAN", "-"};
    static const char* const kTwo[] = {" + ", " - ", " * ", " / ", " ^ ", " ANGLE "};
    const int which = depth == 0 ? 0 : in.below(4);
    const int rarely = in.below(32);
    if (which == 0)
        return rarely == 1 ? "RAND" : rarely == 2 ? "GAUSS" : rarely == 3 ? "HALF(x)" : kLeaves[in.below(12)];
    if (which == 1)
        return std::string(kOne[in.below(6)]) + "(" + term_of(in, depth - 1) + ")";
    const std::string left = term_of(in, depth - 1), sign = kTwo[in.below(6)];
    return "(" + left + sign + term_of(in, depth - 1) + ")";
}

std::string text_of(Input& in)
{
    static const char* const kTargets[] = {"y", "r", "s", "x", "z", "w"};
    const std::string target = kTargets[in.below(6)];
    return target + " = " + term_of(in, 4);
}

/// Where a column is: all of its values lie in the memory.
struct Place {
    int64_t first = 0, stride = 8;
    int32_t kind = KORVALE_DOUBLE;

    Place(Input& in, int64_t rows)
    {
        static const int64_t kStrides[] = {8, 4, 16, 24, 12, -8, -16, 9};
        kind = in.below(4) == 0 ? KORVALE_FLOAT : KORVALE_DOUBLE;
        stride = kStrides[in.below(8)];
        const int64_t reach = (rows - 1) * (stride < 0 ? -stride : stride);
        first = 8 * (in.below(4) == 0 ? in.below(64) : in.below(4)) + (in.below(8) == 0 ? in.below(8) : 0);
        first += stride < 0 ? reach : 0;
        require(reach + 8 * 64 + 16 <= kBytes);
    }

    double get(const Side& side, int64_t row) const
    {
        const char* const at = side.memory.data() + first + row * stride;
        float f;
        double d;
        std::memcpy(&f, at, sizeof f);
        std::memcpy(&d, at, sizeof d);
        return kind == KORVALE_FLOAT ? double{f} : d;
    }
    void put(Side& side, int64_t row, double value) const
    {
        char* const at = side.memory.data() + first + row * stride;
        const auto f = static_cast<float>(value);
        if (kind == KORVALE_FLOAT)
            std::memcpy(at, &f, sizeof f);
        else
            std::memcpy(at, &value, sizeof value);
    }
    korvale_numbers to_read(const Side& side, int64_t rows) const
    {
        return {side.memory.data() + first, rows, stride, 1, kind};
    }
    korvale_numbers_out to_write(Side& side, int64_t rows) const
    {
        return {side.memory.data() + first, rows, stride, 1, kind};
    }
};

double& variable(const Side& side, int v)
{
    std::string name = kNames[v];
    return side.es->var_vals->dvals[EqLookupVariable(side.es, name.data())];
}

double special(Input& in)
{
    const double values[] = {0.0, -0.0, 1.0, -2.0, 0.5, INFINITY, -INFINITY, std::nan("")};
    const int which = in.below(16);
    return which < 8 ? values[which] : which < 12 ? in.below(100) / 8.0 - 4 : in.any<double>();
}

void require_same(const Side& a, const Side& b)
{
    for (int v = 0; v < 6; ++v)
        require(is_same(variable(a, v), variable(b, v)));
    for (int32_t f = 0; f < a.es->table_pos->count; ++f)
        require(a.es->table_pos->ivals[f] == b.es->table_pos->ivals[f]);
}

/// That both memories hold the same: bytes, or NaN where outputs lie.
void require_same(const Side& a, const Side& b, const std::vector<Place>& outputs, int64_t rows)
{
    std::vector<char> differs(kBytes);
    for (int64_t i = 0; i < kBytes; ++i)
        differs[static_cast<size_t>(i)] = a.memory[static_cast<size_t>(i)] != b.memory[static_cast<size_t>(i)];
    for (const Place& output : outputs)
        for (int64_t row = 0; row < rows; ++row)
            if (std::isnan(output.get(a, row)) && std::isnan(output.get(b, row)))
                std::fill_n(differs.begin() + output.first + row * output.stride, output.kind == KORVALE_FLOAT ? 4 : 8,
                            0);
    for (const char byte : differs)
        require(byte == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    Input in(bytes, count);
    Side quick, plain;
    int32_t equations = 0;
    for (int n = 1 + in.below(4); n > 0; --n) {
        const std::string text = text_of(in);
        const korvale_status status = korvale_equations_add(quick.equations, text.c_str(), nullptr, nullptr);
        require(korvale_equations_add(plain.equations, text.c_str(), nullptr, nullptr) == status);
        equations += status == KORVALE_OK ? 1 : 0;
    }
    if (equations == 0)
        return 0;
    const int tables = in.below(4);
    const double position = in.below(64) / 8.0 - 1.5;
    for (const Side* side : {&quick, &plain}) {
        EqSeed(3);
        if ((tables & 1) != 0)
            korvale_equations_make_table(side->equations, "RAND", 4, nullptr);
        if ((tables & 2) != 0)
            korvale_equations_make_table(side->equations, "GAUSS", 3, nullptr);
        korvale_equations_set_table_position(side->equations, position);
    }
    for (int v = 0; v < 6; ++v)
        variable(quick, v) = variable(plain, v) = special(in);

    const bool is_short = in.below(4) == 3;
    const int64_t rows = is_short ? 1 + in.below(64) : 500 + in.below(32);
    std::vector<Place> columns, outputs;
    std::vector<int> of_columns, of_outputs;
    for (int n = (2 + in.below(4)) % 4; n > 0; --n) {
        of_columns.push_back(in.below(6));
        columns.emplace_back(in, rows);
    }
    const bool is_pass = in.below(2) == 1;
    const int32_t equation = in.below(equations);
    for (int n = is_pass ? in.below(4) : 1; n > 0; --n) {
        of_outputs.push_back(in.below(6));
        outputs.emplace_back(in, rows);
    }
    if (is_pass && columns.empty() && outputs.empty())
        return 0;

    for (int64_t at = 0; at + 8 <= kBytes; at += 8) {
        const double value = in.is_used_up() ? static_cast<double>(at % 37) / 4 - 3 : special(in);
        std::memcpy(quick.memory.data() + at, &value, sizeof value);
    }
    plain.memory = quick.memory;

    EqSeed(7);
    for (int64_t row = 0; row < rows; ++row) {
        for (size_t c = 0; c < columns.size(); ++c)
            variable(plain, of_columns[c]) = columns[c].get(plain, row);
        if (!is_pass) {
            outputs[0].put(plain, row, EqEvaluate(plain.es, equation));
            continue;
        }
        require(EqSystemEvaluate(plain.es) == 1);
        for (size_t k = 0; k < outputs.size(); ++k)
            outputs[k].put(plain, row, variable(plain, of_outputs[k]));
    }
    const int next_draw = Mwrand();

    std::vector<korvale_column> read;
    std::vector<korvale_column_out> written;
    for (size_t c = 0; c < columns.size(); ++c)
        read.push_back({kNames[of_columns[c]], columns[c].to_read(quick, rows)});
    for (size_t k = 0; k < outputs.size(); ++k)
        written.push_back({kNames[of_outputs[k]], outputs[k].to_write(quick, rows)});
    EqSeed(7);
    const auto n = static_cast<int64_t>(read.size());
    require(KORVALE_OK ==
            (is_pass ? korvale_equations_pass_rows(quick.equations, read.data(), n, written.data(),
                                                   static_cast<int64_t>(written.size()), nullptr, nullptr, nullptr)
                     : korvale_equations_evaluate_rows(quick.equations, equation, read.data(), n, &written[0].values,
                                                       nullptr, nullptr, nullptr)));
    require(Mwrand() == next_draw);
    require_same(quick, plain);
    require_same(quick, plain, outputs, rows);
    return 0;
}
