#pragma once

#include <map>
#include <vector>

#include "preserve/status.h"

// What the shape preservation does, one edge, one corner and one face after the other. The status is one that
// `PreserveInitialize` made; terms that are switched on have their arrays.
namespace korvale::reference {

/// The edges of a mesh, two points each: every face and corner in order, each pair held against all found before. The
/// search ends after the face that makes them as many as the list is long.
std::vector<int> edges(const std::vector<int>& sizes, const std::vector<int>& corners);

/// What `PreserveInitialize` makes of edges and faces whose corners are all in the list.
struct Connectivity {
    std::vector<int> face_starts, point_edge_count, point_edge_start, point_edges, point_faces;
};
Connectivity connectivity(int points, const std::vector<int>& edges, const std::vector<int>& sizes,
                          const std::vector<int>& corners);

/// The measures at `points`, as `PreservePreserve` records them.
std::vector<double> edge_lengths(const PreserveStatus& s);
std::map<int, double> corner_cosines(const PreserveStatus& s); // of those corners that faces have
double volume(const PreserveStatus& s);
double area(const PreserveStatus& s);

/// `PreserveFindEnergy` and `PreserveFindForce`.
void find_energy(PreserveStatus& s);
void find_force(PreserveStatus& s);

/// One term each, as the exported functions of the same names.
void find_nlen(PreserveStatus& s);
void find_nfang(PreserveStatus& s);
void find_nvolume(PreserveStatus& s);
void find_narea(PreserveStatus& s);
void find_edge_length_force(PreserveStatus& s);
void find_face_angle_force(PreserveStatus& s);
void find_volume_force(PreserveStatus& s);
void find_surface_area_force(PreserveStatus& s);

/// `PreserveCompute` on an array that matches the mesh.
void compute(PreserveStatus& s, DATAstruct& points, int iterations);

} // namespace korvale::reference
