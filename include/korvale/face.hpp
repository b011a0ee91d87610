#pragma once

/// korvale for C++20: values that release themselves, spans in and out, and exceptions that say what was wrong. A thin
/// layer of inline functions over korvale_c.h.
///
/// All names are in namespace korvale, or begin with `korvale_` or `KORVALE_`: so a host may have a `Data`, a `norm` or
/// a `Border` of its own. Hosts that want the records and functions of korvale.h as well include korvale.hpp.
///
/// | to | use |
/// |---|---|
/// | offset an outline, with or without holes | `offset`, `Offsetter` |
/// | lay a band along a line | `band` |
/// | take values of points along | `carry` |
/// | make solids | `bevel`, `tube`, `triangulate` |
/// | flatten an outline, place sections along a path | `flatten`, `frames` |
/// | scatter points on triangles | `scatter` |
/// | evaluate equations written as text | `Equations` |
/// | keep a deforming mesh in shape | `Relaxer` |
/// | cast rays | `RayGrid` |
/// | move points | `Transform` |
///
/// Arguments that cannot be used throw `korvale::Error`; an exhausted heap throws `std::bad_alloc`. Distinct values may
/// be used from several threads at a time.

#if __cplusplus < 202002L
#error "korvale.hpp is for C++20: compile with -std=c++20, or include korvale.h, which is content with C++14"
#endif

#include "face/band.hpp"
#include "face/carry.hpp"
#include "face/equations.hpp"
#include "face/frames.hpp"
#include "face/mesh.hpp"
#include "face/offset.hpp"
#include "face/points.hpp"
#include "face/rays.hpp"
#include "face/relaxer.hpp"
#include "face/scatter.hpp"
#include "face/transform.hpp"
#include "face/version.hpp"
