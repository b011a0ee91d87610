// What every topic of the module needs: arrays seen through views, errors, the interpreter's lock.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <thread>

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <korvale.hpp>

namespace korvale::python {

namespace py = pybind11;

/// Calls a function of `korvale._input`, which turns whatever a person may hand in into arrays.
template <class... Arguments>
py::object converted(const char* by, Arguments&&... arguments)
{
    return py::module_::import("korvale._input").attr(by)(std::forward<Arguments>(arguments)...);
}

/// Calls a function of `korvale._show`, which draws results and hands them to other packages.
template <class... Arguments>
py::object shown(const char* by, Arguments&&... arguments)
{
    return py::module_::import("korvale._show").attr(by)(std::forward<Arguments>(arguments)...);
}

/// What NumPy gets of an object that is its points.
inline py::object array_of_points(const py::array& points, const py::object& dtype, const py::object& copy)
{
    const bool is_same = dtype.is_none() || points.dtype().is(py::dtype::from_args(dtype));
    if (is_same && (copy.is_none() || !copy.cast<bool>()))
        return points;
    return points.attr("astype")(is_same ? py::object(points.dtype()) : dtype);
}

/// Whether an object is an array of T that can be read where it is: C-contiguous, aligned, in native byte order, and of
/// no other class, such as one with a mask.
template <class T>
bool is_plain(py::handle object)
{
    using Plain = py::array_t<T, py::array::c_style>;
    return Py_TYPE(object.ptr()) == py::detail::npy_api::get().PyArray_Type_ && Plain::check_(object) &&
           (py::reinterpret_borrow<py::array>(object).flags() & py::detail::npy_api::NPY_ARRAY_ALIGNED_) != 0;
}

/// Whether an object is a plain array of doubles [n][3].
inline bool is_plain_points(py::handle object)
{
    if (!is_plain<double>(object))
        return false;
    const auto array = py::reinterpret_borrow<py::array>(object);
    return array.ndim() == 2 && array.shape(1) == 3;
}

/// Points handed in: a plain array [n][3] is read where it is, everything else is converted first.
class PointsIn {
public:
    PointsIn(py::handle object, const char* function, const char* argument)
        : array_(is_plain_points(object) ? py::reinterpret_borrow<py::array>(object)
                                         : py::array(converted("points", object, function, argument)))
    {
    }

    PointView view() const
    {
        return PointView::at(static_cast<const double*>(array_.data()), static_cast<std::size_t>(array_.shape(0)));
    }

    /// Without points at the end that repeat the first.
    PointView outline() const
    {
        const PointView all = view();
        std::size_t n = all.size();
        while (n > 1 && all[n - 1] == all[0])
            --n;
        return n < all.size() ? PointView::at(all.data(), n) : all;
    }

private:
    py::array array_;
};

/// An outer outline and its holes, handed in as a list of outlines.
class ShapeIn {
public:
    ShapeIn(py::handle outlines, const char* function, const char* argument)
    {
        for (const py::handle outline : outlines)
            outlines_.emplace_back(outline, function, argument);
    }

    std::vector<PointView> views() const
    {
        std::vector<PointView> views;
        for (const PointsIn& outline : outlines_)
            views.push_back(outline.outline());
        return views;
    }

    std::size_t points() const
    {
        std::size_t sum = 0;
        for (const PointsIn& outline : outlines_)
            sum += outline.view().size();
        return sum;
    }

private:
    std::vector<PointsIn> outlines_;
};

/// A finite number handed in.
inline double number_of(py::handle object, const char* function, const char* argument)
{
    if (PyFloat_Check(object.ptr()))
        return PyFloat_AS_DOUBLE(object.ptr());
    if (int overflow = 0; PyLong_CheckExact(object.ptr())) {
        const long value = PyLong_AsLongAndOverflow(object.ptr(), &overflow);
        if (overflow == 0)
            return static_cast<double>(value);
    }
    return converted("number", object, function, argument).cast<double>();
}

/// A yes or no handed in.
inline bool flag_of(py::handle object, const char* function, const char* argument)
{
    if (PyBool_Check(object.ptr()))
        return object.ptr() == Py_True;
    return converted("flag", object, function, argument).cast<bool>();
}

/// An array over memory that `base` keeps alive.
template <class T>
py::array view_of(T* data, std::vector<py::ssize_t> shape, py::handle base)
{
    return py::array_t<T>(std::move(shape), data, base);
}

/// An array [n][3] over points that `base` keeps alive.
inline py::array view_of(std::span<Point> points, py::handle base)
{
    return view_of(points.empty() ? nullptr : points[0].data(), {static_cast<py::ssize_t>(points.size()), 3}, base);
}

/// An array over a block of the C heap, which it releases.
template <class T>
py::array adopted(T* data, std::vector<py::ssize_t> shape)
{
    return py::array_t<T>(std::move(shape), data, py::capsule(data, [](void* block) { std::free(block); }));
}

/// Bytes that are 0 or 1, as an array of truths over memory that `base` keeps alive.
inline py::array truths_of(std::uint8_t* data, std::size_t size, py::handle base)
{
    return py::array(py::dtype::of<bool>(), {static_cast<py::ssize_t>(size)}, {}, data, base);
}

/// The same over a block of the C heap, which it releases.
inline py::array adopted_truths(std::uint8_t* data, std::int64_t size)
{
    return py::array(py::dtype::of<bool>(), {static_cast<py::ssize_t>(size)}, {}, data,
                     py::capsule(data, [](void* block) { std::free(block); }));
}

/// Lets other threads of the interpreter run meanwhile, if the work is worth it: about 20 microseconds or more.
class Unlocked {
public:
    explicit Unlocked(bool is_worth_it)
    {
        if (is_worth_it)
            release_.emplace();
    }

private:
    std::optional<py::gil_scoped_release> release_;
};

/// Asks now and then, without the interpreter's lock, whether a signal has arrived, and raises what its handler raises:
/// an interrupt from the keyboard ends long work so. It serves as a `Progress`, which goes on until `report`, a Python
/// function of the thousandths done, says no.
class Signals {
public:
    explicit Signals(py::handle report = {}) : report_(report) {}

    bool operator()(double done = 0)
    {
        const auto now = Clock::now();
        if (now - asked_ < kPatience)
            return true;
        asked_ = now;
        const py::gil_scoped_acquire locked;
        if (PyErr_CheckSignals() != 0)
            throw py::error_already_set();
        return !report_ || report_.is_none() || report_(static_cast<int>(1000 * done)).cast<bool>();
    }

private:
    using Clock = std::chrono::steady_clock;
    static constexpr auto kPatience = std::chrono::milliseconds(50);

    Clock::time_point asked_ = Clock::now();
    py::handle report_;
};

/// Calls a function of the C interface that tells `Signals` of its progress through a plain pointer: what is raised is
/// kept until it has ended.
class Watched {
public:
    explicit Watched(py::handle report) : signals_(report) {}

    /// Runs `work(progress, user, error)`, without the interpreter's lock where it is long, and throws what went wrong.
    template <class Work>
    void run(const char* function, bool is_long, Work work)
    {
        korvale_error error;
        korvale_status status;
        {
            const Unlocked unlocked(is_long);
            status = work(is_long ? &tell : nullptr, static_cast<void*>(this), &error);
        }
        if (thrown_)
            std::rethrow_exception(thrown_);
        if (status == KORVALE_STOPPED)
            throw Error(function, "progress", "go on", "it has stopped the work");
        detail::check(function, status, error);
    }

private:
    static std::int32_t tell(double done, void* user)
    {
        auto& self = *static_cast<Watched*>(user);
        try {
            return self.signals_(done) ? 1 : 0;
        } catch (...) {
            self.thrown_ = std::current_exception();
            return 0;
        }
    }

    Signals signals_;
    std::exception_ptr thrown_;
};

/// One thread's turn at an object that serves one thread at a time. Another thread waits, without the interpreter's
/// lock; the same thread, in a function that the object itself calls, is refused.
class Turns {
public:
    class Turn {
    public:
        /// `unlocked` says whether the interpreter's lock has been given away already.
        Turn(Turns& turns, const char* function, bool unlocked) : turns_(turns)
        {
            if (!turns_.mutex_.try_lock()) {
                if (turns_.holder_ == std::this_thread::get_id())
                    throw Error(function, "the object", "be free",
                                "this was called by a function that the object itself is calling");
                const Unlocked waiting(!unlocked);
                turns_.mutex_.lock();
            }
            turns_.holder_ = std::this_thread::get_id();
        }
        ~Turn()
        {
            turns_.holder_ = std::thread::id();
            turns_.mutex_.unlock();
        }
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;

    private:
        Turns& turns_;
    };

private:
    std::mutex mutex_;
    std::atomic<std::thread::id> holder_ = std::thread::id();
};

void bind_arrays(py::module_& m);
void bind_band(py::module_& m);
void bind_equations(py::module_& m);
void bind_math(py::module_& m);
void bind_mesh(py::module_& m);
void bind_offset(py::module_& m);
void bind_paths(py::module_& m);
void bind_rays(py::module_& m);
void bind_relaxer(py::module_& m);
void bind_scatter(py::module_& m);

} // namespace korvale::python
