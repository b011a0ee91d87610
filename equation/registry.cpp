#include "equation/internal/registry.h"

namespace korvale::equation {

NamedFunctions Functions::find(const NamePattern& name) const
{
    NamedFunctions found;
    for (int32_t f = find_name(names, named, name); f >= 0; f = find_name(names, named, name, f + 1)) {
        switch (nargs[f]) {
        case 1:
            found.unary = f;
            return found; // a function of one argument comes before all others
        case 0:
            if (found.no_arg < 0)
                found.no_arg = f;
            break;
        case 2:
            if (found.binary < 0)
                found.binary = f;
            break;
        default:
            break;
        }
    }
    return found;
}

int32_t named_functions(const EquationSystem& es, int32_t count)
{
    const int64_t names = room(es.func_names, DATA_TYPE_BYTE) / kNameBytes;
    const int64_t named = std::min({int64_t{count}, room(es.func_nargs, DATA_TYPE_INT), names,
                                    room(es.tables, DATA_TYPE_DATA), room(es.table_pos, DATA_TYPE_INT)});
    return static_cast<int32_t>(std::max<int64_t>(named, 0));
}

} // namespace korvale::equation
