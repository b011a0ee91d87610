// A host whose own headers have the names of the library's.
#include "../host.cpp"
#include "data/data.h"
#include "math/vector.h"
#include "ray/grid.h"

static_assert(sizeof(HostData) + sizeof(HostVector) + sizeof(HostGrid) == 3, "all three are the host's own");
