#pragma once

#include <concepts>
#include <exception>
#include <functional>
#include <stop_token>
#include <type_traits>
#include <utility>

#include "result.hpp"

namespace korvale {

/// Told now and then what of long work is done, from 0 to 1: a function, whose false stops the work, a
/// `std::stop_token`, or both.
///
/// ```
/// std::stop_source stop;
/// const korvale::RayGrid grid(vertices, triangles, {}, stop.get_token());
/// grid.cast({eye}, directions, {}, {[](double done) { return std::printf("%.0f %%\n", 100 * done) > 0; }});
/// ```
class Progress {
public:
    /// Goes on and tells nobody.
    Progress() = default;

    /// A function and, where there is one, a token.
    template <class Function>
    requires(std::is_invocable_r_v<bool, Function&, double> && !std::same_as<Function, Progress>)
        Progress(Function told, std::stop_token stop = {}) // NOLINT: made in passing
        : told_(std::move(told)), stop_(std::move(stop))
    {
    }

    /// A token.
    Progress(std::stop_token stop) : stop_(std::move(stop)) {} // NOLINT

    /// Whether anybody is told or may stop the work.
    explicit operator bool() const noexcept { return told_ || stop_.stop_possible(); }

    /// Tells; false stops the work.
    bool operator()(double done) const { return (!told_ || told_(done)) && !stop_.stop_requested(); }

private:
    std::function<bool(double)> told_;
    std::stop_token stop_;
};

namespace detail {

/// Somebody who is told of progress, behind a plain pointer: what it throws is kept until the work has ended.
class Told {
public:
    explicit Told(const Progress& progress) : progress_(progress) {}

    /// What the C interface takes.
    ///@{
    korvale_progress function() const noexcept { return progress_ ? &tell : nullptr; }
    void* user() noexcept { return this; }
    ///@}

    /// The failure of a function that has been stopped.
    static Failure stopped(const char* function) noexcept
    {
        return Failure(function, "progress", "go on", "it has stopped the work", KORVALE_STOPPED);
    }

    /// Throws on what has been thrown.
    void rethrow() const
    {
        if (thrown_)
            std::rethrow_exception(thrown_);
    }

private:
    static std::int32_t tell(double done, void* user)
    {
        auto& self = *static_cast<Told*>(user);
        bool goes_on = false;
        self.thrown_ = caught([&] { goes_on = self.progress_(done); });
        return goes_on ? 1 : 0;
    }

    const Progress& progress_;
    std::exception_ptr thrown_;
};

/// Calls a function of the C interface with somebody to tell; the failure is of KORVALE_STOPPED where that has stopped
/// it.
template <class Call>
Result<void> done(const char* function, const Progress& progress, Call call)
{
    Told told(progress);
    korvale_error error;
    const korvale_status status = call(told.function(), told.user(), &error);
    told.rethrow();
    if (status == KORVALE_STOPPED)
        return Told::stopped(function);
    if (status != KORVALE_OK)
        return Failure(function, status, error);
    return {};
}

} // namespace detail
} // namespace korvale
