// Energy and force are walks over the table of terms. The sums are part of the result: the energies of all measures are
// added one after the other in the order of the terms, and so are the contributions to the force of each point.
// Measures and contributions themselves depend on nothing else and are computed side by side in lanes.
#include "preserve/evaluation.h"

#include <algorithm>

#include "preserve/internal/mesh.h"
#include "preserve/internal/terms.h"

using namespace korvale::preserve;

int PreserveFindEnergy(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    status->energy = evaluate(*status);
    return 1;
}

int PreserveFindForce(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    double* const force = forces_of(*status);
    if (force != nullptr)
        std::fill(force, force + components(status->force->count, 3), 0.0);
    for (const Term& term : kTerms)
        if ((status->flags & term.bit) != 0)
            term.add_force(status);
    return 1;
}
