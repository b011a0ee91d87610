// The table of terms. A term lives in one file with its reference, energy and force; the record, the energy and the
// force only walk this table, but where a trial may be given up volume and area are measured first.
#include "preserve/internal/terms.h"

#include "preserve/angles.h"
#include "preserve/internal/connectivity.h"
#include "preserve/internal/mesh.h"
#include "preserve/lengths.h"
#include "preserve/volume_area.h"

namespace korvale::preserve {

const Term kTerms[4] = {
    {PRESERVE_LENGTH, 0, PreserveInitOlen, add_length_energies, PreserveFindEdgeLengthForce},
    {PRESERVE_FACE_ANGLE, 1, PreserveInitOfang, add_angle_energies, PreserveFindFaceAngleForce},
    {PRESERVE_VOLUME, 2, PreserveInitOvolume, add_volume_energy, PreserveFindVolumeForce},
    {PRESERVE_AREA, 3, PreserveInitOarea, add_area_energy, PreserveFindSurfaceAreaForce},
};

double evaluate(PreserveStatus& s, double bound)
{
    Ceiling ceiling;
    ceiling.bound = bound;
    if (ceiling.has_bound())
        measure_volume_and_area(s, s.flags, ceiling); // first: cheapest to measure, and they may reach the bound alone
    double energy = 0.0;
    for (const Term& term : kTerms)
        if ((s.flags & term.bit) != 0)
            energy = term.add_energy(s, energy, ceiling);
    return energy;
}

bool make_room(DATAstruct*& d, int32_t count)
{
    if (d == nullptr) {
        d = new_list(DATA_TYPE_DOUBLE, count, 1);
        return d != nullptr;
    }
    if (d->count >= count && (count == 0 || holds(*d, DATA_TYPE_DOUBLE, count)))
        return true;
    d->dim = 1;
    d->count = count;
    d->type = DATA_TYPE_DOUBLE;
    return count == 0 || DATAAllocate(d) == 1;
}

int switch_off(PreserveStatus& s, int32_t bit)
{
    s.flags &= ~bit;
    return -1;
}

} // namespace korvale::preserve
