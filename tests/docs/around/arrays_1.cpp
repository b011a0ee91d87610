#include <cstdio>

#include <korvale.h>

static void move_square(const double* square, Xfm matrix)
{
#include "block.h"
}

int main()
{
    const double square[] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
    Xfm matrix;
    make_identity(matrix);
    move_square(square, matrix);
}
