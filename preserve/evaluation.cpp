// Energy and force are walks over the table of terms. The sums are part of the result: the energies of all measures are
// added one after the other in the order of the terms, and so are the contributions to the force of each point.
// Measures and contributions themselves depend on nothing else and are computed side by side in lanes.
#include "preserve/evaluation.h"

#include <algorithm>

#include "preserve/internal/evaluation.h"
#include "preserve/internal/measures.h"
#include "preserve/internal/terms.h"

namespace korvale::preserve {

double evaluate(PreserveStatus& s, const Mesh& mesh, double bound)
{
    Ceiling ceiling{s.flags, bound};
    if (ceiling.has_bound())
        measure_volume_and_area(s, mesh, ceiling); // first: cheapest to measure, and they may reach the bound alone
    double energy = 0.0;
    for (const Term* term : kTerms)
        if ((s.flags & term->bit) != 0)
            energy = term->add_energy(s, mesh, energy, ceiling);
    return energy;
}

void find_force(const PreserveStatus& s, const Mesh& mesh)
{
    if (mesh.force != nullptr)
        std::fill(mesh.force, mesh.force + mesh.force_values, 0.0);
    if (!mesh.can_have_force())
        return;
    for (const Term* term : kTerms)
        if ((s.flags & term->bit) != 0)
            term->add_force(s, mesh);
}

} // namespace korvale::preserve

using namespace korvale::preserve;

int PreserveFindEnergy(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    status->energy = evaluate(*status, mesh_of(*status, status->cur_points));
    return 1;
}

int PreserveFindForce(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    find_force(*status, mesh_of(*status, status->cur_points));
    return 1;
}
