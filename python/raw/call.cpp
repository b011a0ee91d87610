#include "call.h"

#include <algorithm>
#include <utility>

namespace korvale::raw {

namespace {

thread_local std::exception_ptr raised;

} // namespace

Call::~Call()
{
    for (int* const users : marks_)
        --*users;
}

void Call::refuse(const std::string& why) const
{
    throw py::value_error(std::string(function_) + ": " + why);
}

void Call::require(bool holds, const char* argument) const
{
    if (!holds)
        throw py::type_error(std::string(function_) + ": " + argument + " is None, a record is wanted");
}

void Call::mark(int& users, const char* argument)
{
    if (std::find(marks_.begin(), marks_.end(), &users) != marks_.end())
        return;
    if (users != 0)
        throw std::runtime_error(std::string(function_) + ": " + argument + " is in use by another call");
    ++users;
    marks_.push_back(&users);
}

void Call::use(const std::shared_ptr<Whole>& status, const char* argument, bool may_nest)
{
    require(status != nullptr, argument);
    const auto here = std::this_thread::get_id();
    if (may_nest && status->users != 0 && status->user == here)
        return;
    mark(status->users, argument);
    status->user = here;
    kept_.push_back(status);
    statuses_.push_back(status.get());
}

template <class Object>
void Call::prepare(Object& object, const char* argument, Use use)
{
    if (object.record == nullptr)
        refuse(std::string(argument) + " was part of a status that has been released");
    const bool may_move = use != Use::read && use != Use::write;
    if (object.is_part && may_move)
        refuse(std::string(argument) + " is part of a status, which owns its buffer");
    if (object.is_locked && use == Use::write)
        refuse(std::string(argument) + " is part of a status, which relies on its elements");
    mark(object.users, argument);
    if (const std::shared_ptr<Whole> whole = object.whole.lock())
        mark(whole->users, argument);
    if (use == Use::shape || use == Use::remake)
        object.stand_apart();
    if (use == Use::empty)
        for (int number = 0; number < kBuffers; ++number)
            object.leave(number);
}

Data* Call::take(Table& table, const char* argument, Use use)
{
    prepare(table, argument, use);
    if (use == Use::read || use == Use::write || use == Use::shape)
        if (const std::string why = table.misfit(); !why.empty())
            refuse(std::string(argument) + ": " + why);
    if (use == Use::shape || use == Use::remake)
        tables_.push_back(&table);
    return table.record;
}

DATAstruct* Call::take(Tree& tree, const char* argument, Use use)
{
    if (use == Use::empty && tree.record != nullptr && !tree.is_part)
        tree.part_company();
    prepare(tree, argument, use);
    if (use == Use::read || use == Use::write || use == Use::shape)
        if (const std::string why = tree.misfit_below(); !why.empty())
            refuse(std::string(argument) + ": " + why);
    if (use == Use::shape || use == Use::remake)
        trees_.push_back(&tree);
    return tree.record;
}

void Call::settle()
{
    for (Table* const table : tables_)
        table->settle();
    for (Tree* const tree : trees_)
        tree->settle_tree();
    for (Whole* const status : statuses_)
        status->take_back();
}

std::exception_ptr Call::forget_raised()
{
    return std::exchange(raised, nullptr);
}

void Call::raise_again(const std::exception_ptr& before)
{
    if (std::exception_ptr now = std::exchange(raised, before))
        std::rethrow_exception(now);
}

void keep_raised()
{
    if (raised == nullptr)
        raised = std::current_exception();
}

bool has_raised()
{
    return raised != nullptr;
}

} // namespace korvale::raw
