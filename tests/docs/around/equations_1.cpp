#include <korvale.h>

static int done = 0;

static void wave()
{
#include "block.h"
    done = 1;
}

int main()
{
    wave();
    return done - 1;
}
