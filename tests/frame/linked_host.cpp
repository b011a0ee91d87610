// A host that is linked against the library. By the time main runs, loading is complete.
#include "frame/frame.h"
#include "tests/frame/recorder.h"

int main()
{
    return _Initializerkorvale::ref == 2 && _Initializerkorvale::handle == recorder::handle() ? 0 : 1;
}
