#pragma once

#include "../korvale.hpp"
