#include "../example.h"

EXAMPLE("korvale::version korvale::version_number")
{
    if (korvale::version_number() >= 10100) // 1.1.0
        std::printf("%s\n", korvale::version() == KORVALE_VERSION ? "as compiled" : "later than compiled");
    // > as compiled
}
