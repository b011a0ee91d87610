// The second stage of loading: an object without a priority comes after all that have one, and no other source of the
// library has such an object.
#include "frame/frame.h"

static _Initializerkorvale last;

// The name by which a static link asks for this object, and through it for the first stage.
extern "C" const char korvale_second_stage;
const char korvale_second_stage = 0;
