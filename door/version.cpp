#include "include/korvale.h"
#include "include/korvale_c.h"

const char* korvale_version()
{
    return KORVALE_VERSION;
}

int32_t korvale_version_number()
{
    return 10000 * KORVALE_VERSION_MAJOR + 100 * KORVALE_VERSION_MINOR + KORVALE_VERSION_PATCH;
}
