#include <cstdlib>

#include <korvale.h>

// A host without vertices is the least there is: what it answers comes back.
static void exchange(I3DVertexCollection* collection)
{
#include "block.h"
}

int main()
{
    exchange(nullptr);
}
