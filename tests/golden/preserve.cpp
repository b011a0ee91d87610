// The fixed results of shape preservation: references, energies, forces and relaxed positions.
#include <vector>

#include "tests/golden/workload.h"
#include "tests/preserve/random_meshes.h"
#include "tests/preserve/solver.h"
#include "tests/support/draws.h"

namespace korvale::test {

WORKLOAD(ShapePreservation, 250, 0x7885cddcf993e885u, 1)
{
    Draws random(1007);
    for (int i = 0; i < rounds; ++i) {
        Mesh mesh = cube_of_triangles();
        if (i % 2 != 0) {
            const int faces = random.between(1, 60); // each by itself: arguments have no order
            const int points = random.between(4, 40);
            mesh = random_soup(random, points, faces);
        }
        mesh.points = random.uniforms(static_cast<int64_t>(mesh.points.size()), -1, 1);
        Solver solver(mesh);
        hash.add(solver.result());
        if (solver.result() != 1 || mesh.corners.empty()) // without corners there are no lists
            continue;
        hash.add_array(*solver->edges).add_array(*solver->point_edges).add_array(*solver->point_edge_start);
        for (const int term : {PRESERVE_LENGTH, PRESERVE_FACE_ANGLE, PRESERVE_VOLUME, PRESERVE_AREA})
            if (random.below(4) != 0)
                hash.add(PreservePreserve(solver, term, random.uniform(0.1, 2)));
        solver.place(shaken(random, mesh.points, 0.2));
        hash.add(solver.energy()).add(PreserveFindForce(solver)).add(solver->nvolume).add(solver->narea);
        hash.add_array(*solver->force);
        hash.add(PreserveCompute(solver, solver.moved(), random.between(1, 6))).add_array(*solver.moved());
        hash.add(solver->energy).add(solver->ovolume).add(solver->oarea);
    }
}

} // namespace korvale::test
