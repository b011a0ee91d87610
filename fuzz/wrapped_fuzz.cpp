// Arrays around memory of the host in every function that makes an array longer in place. The library cannot know who
// frees that memory, so a call that would have to grow one fails and changes nothing; where there is room it works.
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "border/band.h"
#include "equation/evaluate.h"
#include "equation/functions.h"
#include "equation/parse.h"
#include "equation/variables.h"
#include "fuzz/functions.h"
#include "fuzz/input.h"

using namespace korvale::fuzz;

namespace {

size_t component_bytes(const DATAstruct& d)
{
    constexpr size_t kBytes[] = {sizeof(double), sizeof(int32_t), 1, sizeof(void*), sizeof(void*)};
    return kBytes[d.type];
}

void* buffer(const DATAstruct& d)
{
    return d.type == DATA_TYPE_DOUBLE ? static_cast<void*>(d.dvals)
           : d.type == DATA_TYPE_INT  ? static_cast<void*>(d.ivals)
           : d.type == DATA_TYPE_BYTE ? static_cast<void*>(d.bvals)
                                      : static_cast<void*>(d.pvals);
}

void set_buffer(DATAstruct& d, void* memory)
{
    if (d.type == DATA_TYPE_DOUBLE)
        d.dvals = static_cast<double*>(memory);
    else if (d.type == DATA_TYPE_INT)
        d.ivals = static_cast<int32_t*>(memory);
    else if (d.type == DATA_TYPE_BYTE)
        d.bvals = static_cast<uint8_t*>(memory);
    else
        d.pvals = static_cast<void**>(memory);
}

/// An array whose buffer is put into memory of the host, exactly as long as its elements, and taken out again at the
/// end. The memory is none that free would take.
class Wrapping {
public:
    Wrapping(DATAstruct& d, Input& in) : d_(d), alloc_count_(d.alloc_count), alloc_dim_(d.alloc_dim), own_(buffer(d))
    {
        if (own_ == nullptr || d.count < 1 || d.dim < 1)
            return;
        const size_t bytes = static_cast<size_t>(d.count) * static_cast<size_t>(d.dim) * component_bytes(d);
        memory_.resize(bytes);
        std::memcpy(memory_.data(), own_, bytes);
        set_buffer(d, memory_.data());
        d.alloc_count = d.alloc_dim = in.below(2) - 1;
    }

    /// Puts the library's own buffer back, with what was written to the memory of the host.
    ~Wrapping()
    {
        if (memory_.empty())
            return;
        require(buffer(d_) == memory_.data() && d_.alloc_count < 1);
        std::memcpy(own_, memory_.data(), memory_.size());
        set_buffer(d_, own_);
        d_.alloc_count = alloc_count_;
        d_.alloc_dim = alloc_dim_;
    }
    Wrapping(const Wrapping&) = delete;
    Wrapping& operator=(const Wrapping&) = delete;

    bool is_wrapped() const { return !memory_.empty(); }

private:
    DATAstruct& d_;
    const int32_t alloc_count_, alloc_dim_;
    void* const own_;
    std::vector<unsigned char> memory_;
};

/// What a record says and holds.
struct Snapshot {
    explicit Snapshot(const DATAstruct& d) : record(d)
    {
        if (buffer(d) == nullptr || d.count < 1 || d.dim < 1)
            return;
        const auto* const first = static_cast<const unsigned char*>(buffer(d));
        elements.assign(first, first + static_cast<size_t>(d.count) * static_cast<size_t>(d.dim) * component_bytes(d));
    }

    bool is_still(const DATAstruct& d) const
    {
        return std::memcmp(&record, &d, sizeof d) == 0 && elements == Snapshot(d).elements;
    }

    DATAstruct record;
    std::vector<unsigned char> elements;
};

void make_points(DATAstruct& d, Input& in)
{
    DATAInitialize(&d);
    d.count = in.below(9);
    d.dim = in.below(8) == 0 ? 2 : 3;
    if (DATAAllocate(&d) == 1)
        for (int32_t i = 0; i < d.count * d.dim; ++i)
            d.dvals[i] = in.below(32) / 4.0;
}

/// Wings and pipe on a path and an output of which either may be the host's.
void band(Input& in)
{
    DATAstruct path, output;
    make_points(path, in);
    make_points(output, in);
    BORDERStatus status;
    std::memset(&status, 0, sizeof status);
    status.path = &path;
    status.output = &output;
    for (int round = in.below(4); round > 0; --round) {
        const bool wraps_path = in.below(2) == 0, wraps_output = in.below(2) == 0;
        DATAstruct none;
        DATAInitialize(&none);
        Wrapping around_path(wraps_path ? path : none, in), around_output(wraps_output ? output : none, in);
        const Snapshot path_before(path), output_before(output);
        if (in.below(2) == 0) {
            BORDERAddWings(&status);
            require(output_before.is_still(output));
            require(!around_path.is_wrapped() || path_before.is_still(path));
        } else {
            BORDERMakePipe(&status);
            require(path_before.is_still(path));
            require(!around_output.is_wrapped() || path.count < 1 || output_before.is_still(output));
        }
    }
    DATADispose(&path);
    DATADispose(&output);
}

/// One call that may make arrays of the system longer; whether it succeeded.
bool extend(EquationSystem& es, Input& in)
{
    std::string name(1 + static_cast<size_t>(in.below(3)), 'a');
    for (char& letter : name)
        letter = static_cast<char>('a' + in.below(26));
    switch (in.below(5)) {
    case 0:
        return EqAddFuncUnary(&es, name.data(), half) == 1;
    case 1:
        return EqAddFuncNoArg(&es, name.data(), three) == 1;
    case 2:
        return EqAnotherFunc(&es) >= 0;
    case 3: {
        std::string names = name + " x y" + name;
        return EqParseVariables(&es, names.data(), 0) >= 0;
    }
    default: {
        std::string text = "PI = E * 2 + " + name;
        const int rows = es.equations->count;
        EqParseEquation(&es, text.data());
        return es.equations->count == rows + 1;
    }
    }
}

void system(Input& in)
{
    EquationSystem es;
    require(EqSystemInitialize(&es) == 1);
    for (int i = in.below(24); i > 0; --i)
        extend(es, in);
    DATAstruct* const arrays[] = {es.funcs,     es.func_names, es.func_nargs, es.var_names, es.var_vals,
                                  es.var_flags, es.equations,  es.tables,     es.table_pos};
    for (int round = in.below(6); round > 0; --round) {
        DATAstruct none;
        DATAInitialize(&none);
        const int at = in.below(9), also = in.below(9);
        Wrapping first(*arrays[at], in), second(also == at ? none : *arrays[also], in);
        std::vector<Snapshot> before;
        for (const DATAstruct* d : arrays)
            before.emplace_back(*d);
        if (!extend(es, in))
            for (size_t i = 0; i < 9; ++i)
                require(before[i].is_still(*arrays[i]));
        EqLookupFunction(&es, before.size() > 1 ? std::string("half").data() : nullptr);
        EqSystemEvaluate(&es);
    }
    EqSystemDispose(&es);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    Input in(bytes, count);
    if (in.below(2) == 0)
        band(in);
    else
        system(in);
    return 0;
}
