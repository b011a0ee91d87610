// The second stage of loading: an object without a priority comes after all that have one, and no other source of the
// library has such an object.
#include "frame/frame.h"

static _Initializerkorvale last;
