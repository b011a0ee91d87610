#pragma once

#include "data/data.h"
#include "data/datastruct.h"

namespace korvale::inside {

/// What `data_to_xy_xfms` and `DATA_to_xy_xfms` do, on paths that are only read.
int flatten(const Data* path, double (*xfm)[4], double (*reverse)[4], bool closed);
void flatten(const DATAstruct* path, double (*xfm)[4], double (*reverse)[4], bool closed);

} // namespace korvale::inside
