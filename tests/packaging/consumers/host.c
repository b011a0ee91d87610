/* A host in C: one call that writes into its memory, one that fails, and a handle. */
#include <korvale_c.h>

#include <stdio.h>

int main(void)
{
    const float square[] = {0, 0, 4, 0, 4, 4, 0, 4};
    const korvale_points outline = {square, 4, 0, 2, KORVALE_FLOAT};
    const double eye[] = {3, 1, 5}, down[] = {0, 0, -1};
    double moved[12];
    korvale_border border = {.points = moved};
    const korvale_triangles triangles = {{.data = moved, .count = 3}, {.data = NULL}};
    korvale_grid* grid;
    korvale_error error;
    if (korvale_offset(&outline, 0.5, NULL, &border, &error) != KORVALE_OK ||
        korvale_grid_new(&triangles, NULL, &grid, &error) != KORVALE_OK)
        return 1;
    printf("%g of %g\n", korvale_grid_nearest(grid, eye, down).distance, moved[6]);
    korvale_grid_free(grid);
    if (korvale_offset(NULL, 0.5, NULL, &border, &error) == KORVALE_OK)
        return 1;
    printf("%s\n", error.text);
    return 0;
}
