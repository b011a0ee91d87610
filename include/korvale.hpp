#pragma once

/// korvale for C++20: values that release themselves, spans in and out, and exceptions that say what was wrong, in
/// namespace korvale. A thin layer of inline functions over korvale.h, which it includes; it gives the same bits and
/// adds no symbol to the library.
///
/// | to | use |
/// |---|---|
/// | offset an outline, with or without holes | `offset`, `Offsetter` |
/// | lay a band along a line | `band` |
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

#include "korvale/face/band.hpp"
#include "korvale/face/equations.hpp"
#include "korvale/face/frames.hpp"
#include "korvale/face/mesh.hpp"
#include "korvale/face/offset.hpp"
#include "korvale/face/points.hpp"
#include "korvale/face/rays.hpp"
#include "korvale/face/relaxer.hpp"
#include "korvale/face/scatter.hpp"
#include "korvale/face/transform.hpp"
