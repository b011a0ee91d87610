#pragma once

#include "../korvale.h"
