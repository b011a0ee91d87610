// The version at run time.
#include "check.h"

#include <string.h>

static korvale_status tells_text_and_number(void)
{
    CHECK(strcmp(korvale_version(), "1.1.0") == 0);
    CHECK(korvale_version_number() == 10100);
    return KORVALE_OK;
}

void version_tests(void)
{
    RUN(tells_text_and_number);
}
