#include "tests/preserve/solver.h"

#include <algorithm>
#include <cstdlib>

namespace korvale::test {

Solver::Solver(const Mesh& mesh, const std::vector<int>& edges)
    : points_(korvale::test::points<DATAstruct>(mesh.points)), edges_(ints<DATAstruct>(2, edges)),
      face_sizes_(ints<DATAstruct>(1, mesh.sizes)), face_points_(ints<DATAstruct>(1, mesh.corners)),
      moved_(korvale::test::points<DATAstruct>(mesh.points)),
      result_(PreserveInitialize(&status_, points_, edges_, face_sizes_, face_points_))
{
}

Solver::~Solver()
{
    DATAstruct* const edges = status_.edges;
    PreserveDispose(&status_);
    if (edges == edges_.get())
        return;
    DATADispose(edges);
    std::free(edges);
}

void Solver::place(const std::vector<double>& positions)
{
    std::copy(positions.begin(), positions.end(), moved_->dvals);
}

void Solver::tag(const std::vector<int>& points)
{
    tags_.allocate(DATA_TYPE_BYTE, points_->count, 1);
    for (int i : points)
        tags_->bvals[i] = 1;
    PreserveSetTag(&status_, tags_);
}

double Solver::energy()
{
    status_.cur_points = moved_;
    PreserveFindEnergy(&status_);
    return status_.energy;
}

double Solver::energy_at(const std::vector<double>& positions)
{
    place(positions);
    return energy();
}

std::vector<double> Solver::force()
{
    energy();
    PreserveFindForce(&status_);
    return values_of(*status_.force);
}

bool switch_on(Solver& solver, int terms, double weight)
{
    for (int term = 1; term <= PRESERVE_AREA; term *= 2)
        if ((terms & term) != 0 && PreservePreserve(solver, term, weight) < 0)
            return false;
    return true;
}

} // namespace korvale::test
