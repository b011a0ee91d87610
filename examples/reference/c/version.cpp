#include "../example.h"

EXAMPLE("korvale_version korvale_version_number")
{
    if (korvale_version_number() >= 10100) // 1.1.0
        printf("%s\n", korvale_version()[0] == '1' ? "1.1 or later" : "2 or later");
    // > 1.1 or later
}
