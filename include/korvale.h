#pragma once

/// All of korvale: numeric arrays, vector and matrix math, equations, outline flattening and path frames, the border
/// sweep, shape preservation, ray casting, triangle sampling and vertex exchange with a host.

/// The version as text.
#define KORVALE_VERSION "1.1.0"
#define KORVALE_VERSION_MAJOR 1 ///< raised when programs have to be changed or compiled again
#define KORVALE_VERSION_MINOR 1 ///< raised when functions are added
#define KORVALE_VERSION_PATCH 0 ///< raised when something is mended

#include "../border/band.h"
#include "../border/border.h"
#include "../border/outlines.h"
#include "../border/status.h"
#include "../data/data.h"
#include "../data/datastruct.h"
#include "../data/operations.h"
#include "../data/sampling.h"
#include "../equation/evaluate.h"
#include "../equation/functions.h"
#include "../equation/parse.h"
#include "../equation/simplify.h"
#include "../equation/system.h"
#include "../equation/tables.h"
#include "../equation/variables.h"
#include "../exchange/vertices.h"
#include "../frame/frame.h"
#include "../math/box.h"
#include "../math/combinatorics.h"
#include "../math/line.h"
#include "../math/orientation.h"
#include "../math/rotation.h"
#include "../math/solve.h"
#include "../math/transform.h"
#include "../math/vector.h"
#include "../path/flatten.h"
#include "../path/frames.h"
#include "../preserve/angles.h"
#include "../preserve/compute.h"
#include "../preserve/evaluation.h"
#include "../preserve/lengths.h"
#include "../preserve/status.h"
#include "../preserve/volume_area.h"
#include "../ray/grid.h"
#include "../ray/query.h"
