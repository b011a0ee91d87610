// Terms one at a time, and what they have in common.
#include "preserve/internal/terms.h"

#include "data/internal/record.h"
#include "preserve/internal/connectivity.h"

namespace korvale::preserve {

int take_reference(PreserveStatus* status, const Term& term)
{
    if (status == nullptr)
        return -1;
    if (term.measure_reference(*status, mesh_of(*status, status->points)))
        return 1;
    status->flags &= ~term.bit;
    return -1;
}

int find_energy_of(PreserveStatus* status, const Term& term)
{
    if (status == nullptr)
        return -1;
    Ceiling alone{term.bit};
    status->energy = term.add_energy(*status, mesh_of(*status, status->cur_points), status->energy, alone);
    return 1;
}

int find_force_of(PreserveStatus* status, const Term& term)
{
    if (status == nullptr)
        return -1;
    const Mesh mesh = mesh_of(*status, status->cur_points);
    if (mesh.can_have_force())
        term.add_force(*status, mesh);
    return 1;
}

bool make_room(DATAstruct*& d, int32_t count)
{
    if (d == nullptr) {
        d = new_list(DATA_TYPE_DOUBLE, count, 1);
        return d != nullptr;
    }
    if (d->count >= count && (count == 0 || holds(*d, DATA_TYPE_DOUBLE, count)))
        return true;
    shape_as(*d, DATA_TYPE_DOUBLE, count, 1);
    return count == 0 || DATAAllocate(d) == 1;
}

} // namespace korvale::preserve
