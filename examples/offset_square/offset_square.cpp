// Offsets a square by half a unit: all it takes to use the library.

#include <cstdio>
#include <korvale.h>

int main()
{
    double square[] = {0, 0, 0, 4, 0, 0, 4, 4, 0, 0, 4, 0};
    BORDERStatus border;
    BORDERInitialize(&border);
    border.path->count = 4;
    border.path->dim = 3;
    border.path->dvals = square; // the host's own memory
    border.distance = 0.5;       // outwards; negative is inwards
    if (BORDER(&border) == 1)
        for (int i = 0; i < border.output->count; ++i)
            std::printf("%g %g\n", border.output->dvals[3 * i], border.output->dvals[3 * i + 1]);
}
