// Flattening transforms and frames along a polyline.
#include <algorithm>

#include "bind.h"

namespace korvale::raw {
namespace {

template <class R>
void def_frames(py::module_& m, const char* name, void (*function)(R*, int, double (*)[4][4]))
{
    def_work<Object<R>&, int, const py::object&>(
        m, name,
        [function](Call& call, Object<R>& path, int closed, const py::object& frames) {
            const Array result = place(frames, {std::max(path.record->count, 0), 4, 4}, call.function(), "frames");
            call.run([&] { function(path.record, closed, reinterpret_cast<double(*)[4][4]>(doubles(result))); });
            return result;
        },
        read("path"), plain("closed"), plain("frames", optional));
}

} // namespace

void add_path(py::module_& m)
{
    def_unlocked(m, NAMED(data_to_xy_xfms), read("path", or_none), out<4, 4>("xfm"), out<4, 4>("reverse"),
                 plain("closed", 1));
    def_unlocked(m, NAMED(DATA_to_xy_xfms), read("path", or_none), out<4, 4>("xfm"), out<4, 4>("reverse"),
                 plain("closed", 1));
    def_frames(m, NAMED(path2xfm));
    def_frames(m, NAMED(PATH2xfm));
}

} // namespace korvale::raw
