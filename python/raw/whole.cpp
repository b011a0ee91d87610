#include "whole.h"

#include <utility>

namespace korvale::raw {

namespace {

/// An object and the status that keeps its record.
template <class Object>
struct Part {
    std::shared_ptr<Whole> whole;
    std::shared_ptr<Object> object;
};

template <class Object, class R>
py::object part_of(std::unordered_map<void*, std::shared_ptr<Object>>& parts, std::shared_ptr<Whole> whole, R* record,
                   bool is_locked)
{
    if (record == nullptr)
        return py::none();
    std::shared_ptr<Object>& object = parts[record];
    if (object == nullptr) {
        object = std::make_shared<Object>(record);
        object->whole = whole;
        object->is_part = true;
        object->is_locked = is_locked;
    }
    const auto both = std::make_shared<Part<Object>>(Part<Object>{std::move(whole), object});
    return py::cast(std::shared_ptr<Object>(both, object.get()));
}

} // namespace

py::object Whole::part(DATAstruct* record, bool is_locked)
{
    return part_of(trees_, shared_from_this(), record, is_locked);
}

py::object Whole::part(Data* record, bool is_locked)
{
    return part_of(tables_, shared_from_this(), record, is_locked);
}

void Whole::parts_stand_apart()
{
    for (auto& tree : trees_)
        tree.second->stand_apart();
    for (auto& table : tables_)
        table.second->stand_apart();
}

namespace {

template <class Object>
void kill(Object& object)
{
    for (int number = 0; number < kSlots; ++number) // slots are the library's, which follows them
        object.leave(number);
    object.record = nullptr;
}

} // namespace

void Whole::parts_die()
{
    for (auto& tree : trees_)
        kill(*tree.second);
    for (auto& table : tables_)
        kill(*table.second);
    trees_.clear();
    tables_.clear();
}

void Whole::part_dies(void* record)
{
    if (const auto tree = trees_.find(record); tree != trees_.end()) {
        kill(*tree->second);
        trees_.erase(tree);
    }
}

} // namespace korvale::raw
