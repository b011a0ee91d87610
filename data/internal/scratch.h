#pragma once

#include "platform/internal/scratch.h" // its present place
