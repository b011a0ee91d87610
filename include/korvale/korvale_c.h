#pragma once

#include "../korvale_c.h"
