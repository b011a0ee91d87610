#pragma once

#include <exception>
#include <vector>

#include "whole.h"

// One call of the library: its arguments before and after, the interpreter lock, and what Python functions raise.
namespace korvale::raw {

/// What the library does with a record: it reads it, writes its elements, may give it another buffer, may do so
/// whatever its sizes, or empties it, so that its buffers, children and list go to those who hold them.
enum class Use { read, write, shape, remake, empty };

/// One call of the library: looks at its arguments before, and puts in order what it has changed after.
class Call {
public:
    explicit Call(const char* function) : function_(function) {}
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;
    ~Call();

    const char* function() const { return function_; }
    [[noreturn]] void refuse(const std::string& why) const;

    /// An argument and its use.
    template <class Object>
    auto* take(const std::shared_ptr<Object>& object, const char* argument, Use use)
    {
        require(object != nullptr, argument);
        kept_.push_back(object);
        return take(*object, argument, use);
    }
    template <class Object>
    auto* take_optional(const std::shared_ptr<Object>& object, const char* argument, Use use)
    {
        return object == nullptr ? nullptr : take(object, argument, use);
    }
    /// A status; a call that `may_nest` may come from a function that the library calls on its behalf.
    void use(const std::shared_ptr<Whole>& status, const char* argument, bool may_nest = false);

    /// Calls the library without the interpreter lock, and raises what a Python function has raised on the way.
    template <class Work>
    auto run(Work&& work)
    {
        const auto before = forget_raised();
        if constexpr (std::is_void_v<decltype(work())>) {
            {
                const py::gil_scoped_release others_may_run;
                work();
            }
            settle();
            raise_again(before);
        } else {
            const auto result = [&] {
                const py::gil_scoped_release others_may_run;
                return work();
            }();
            settle();
            raise_again(before);
            return result;
        }
    }

private:
    const char* const function_;
    std::vector<std::shared_ptr<void>> kept_; // what the marks are on
    std::vector<int*> marks_;
    std::vector<Table*> tables_;
    std::vector<Tree*> trees_;
    std::vector<Whole*> statuses_;

    void require(bool holds, const char* argument) const;
    void mark(int& users, const char* argument);
    Data* take(Table& table, const char* argument, Use use);
    DATAstruct* take(Tree& tree, const char* argument, Use use);
    template <class Object>
    void prepare(Object& object, const char* argument, Use use);
    void settle();
    static std::exception_ptr forget_raised();
    static void raise_again(const std::exception_ptr& before);
};

/// Keeps the exception that is being handled for the end of the call that Python was called from; within `catch`.
void keep_raised();
bool has_raised();

} // namespace korvale::raw
