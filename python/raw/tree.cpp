#include "tree.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "whole.h"

namespace korvale::raw {

namespace {

std::unordered_map<DATAstruct*, std::weak_ptr<Tree>>& trees()
{
    static auto* const known = new std::unordered_map<DATAstruct*, std::weak_ptr<Tree>>; // outlives the interpreter
    return *known;
}

/// Where trees wait for their end, so that deep ones do not end in deep calls.
std::vector<std::shared_ptr<Tree>>& waiting()
{
    static auto* const those = new std::vector<std::shared_ptr<Tree>>;
    return *those;
}

} // namespace

std::shared_ptr<Tree> Tree::make()
{
    return of(DATANew());
}

std::shared_ptr<Tree> Tree::of(DATAstruct* record)
{
    if (record == nullptr)
        throw std::bad_alloc();
    std::weak_ptr<Tree>& known = trees()[record];
    if (std::shared_ptr<Tree> tree = known.lock())
        return tree;
    auto tree = std::make_shared<Tree>(record);
    known = tree;
    tree->settle_tree();
    return tree;
}

Tree::~Tree()
{
    static bool is_emptying = false;
    for (auto& child : children)
        waiting().push_back(std::move(child.second));
    if (following != nullptr)
        waiting().push_back(std::move(following));
    if (!is_part && record != nullptr)
        trees().erase(record);
    let_go();
    if (is_emptying)
        return;
    is_emptying = true;
    while (!waiting().empty()) {
        const std::shared_ptr<Tree> last = std::move(waiting().back());
        waiting().pop_back();
    }
    is_emptying = false;
}

size_t Tree::slot_count() const
{
    if (record->pvals == nullptr || record->alloc_type != DATA_TYPE_DATA || record->alloc_count < 1 ||
        record->alloc_dim < 1)
        return 0;
    const size_t wanted = static_cast<size_t>(record->alloc_count) * static_cast<size_t>(record->alloc_dim);
    return std::min(wanted, room(kSlots) / sizeof(void*));
}

void Tree::settle_tree()
{
    settle();
    if (is_part)
        return;
    if (record->pvals != nullptr || !children.empty()) {
        std::unordered_map<DATAstruct*, std::shared_ptr<Tree>> now;
        for (size_t i = 0, n = slot_count(); i < n; ++i)
            if (auto* const child = static_cast<DATAstruct*>(record->pvals[i]); child != nullptr)
                now.emplace(child, nullptr);
        for (auto& [child, tree] : now)
            tree = of(child);
        children.swap(now); // those that are in no slot any more go with `now`
    }
    if (record->next == nullptr)
        following.reset();
    else if (following == nullptr || following->record != record->next)
        following = of(record->next);
}

void Tree::part_company()
{
    std::fill_n(record->pvals, slot_count(), nullptr);
    record->next = nullptr;
    settle_tree();
}

bool Tree::reaches(const Tree& wanted) const
{
    std::vector<const Tree*> open = {this};
    std::unordered_set<const Tree*> seen;
    while (!open.empty()) {
        const Tree* const tree = open.back();
        open.pop_back();
        if (tree == &wanted)
            return true;
        if (!seen.insert(tree).second)
            continue;
        if (tree->following != nullptr)
            open.push_back(tree->following.get());
        for (const auto& child : tree->children)
            open.push_back(child.second.get());
    }
    return false;
}

void Tree::link(const std::shared_ptr<Tree>& self, std::shared_ptr<Tree> next)
{
    DATAstruct& r = self->live();
    if (self->is_part || (next != nullptr && next->is_part))
        throw py::value_error("next: a record that is part of a status stands in no list");
    if (next == self || (next != nullptr && is_held_elsewhere(self) && next->reaches(*self)))
        throw py::value_error("next: the list would run in a circle");
    r.next = next == nullptr ? nullptr : &next->live();
    self->following = std::move(next);
}

void Tree::fill(const std::shared_ptr<Tree>& self, const std::vector<std::shared_ptr<Tree>>& records)
{
    DATAstruct& r = self->live();
    if (self->is_part)
        throw py::value_error("pvals: this record is part of a status, which owns its slots");
    for (const auto& child : records) {
        if (child != nullptr && child->is_part)
            throw py::value_error("pvals: a record that is part of a status stands in no slot");
        if (child == self || (child != nullptr && is_held_elsewhere(self) && child->reaches(*self)))
            throw py::value_error("pvals: an array cannot hold itself");
    }
    if (records.empty() || records.size() > INT32_MAX)
        throw py::value_error("pvals: 1 to 2147483647 records are wanted");
    const auto shaped = static_cast<int64_t>(r.count) * r.dim;
    if (r.type != DATA_TYPE_DATA || r.alloc_type != DATA_TYPE_DATA || self->slot_count() < records.size() ||
        r.count < 1 || r.dim < 1 || shaped != static_cast<int64_t>(records.size())) {
        for (int number = 0; number < kBuffers; ++number)
            self->leave(number);
        r.count = static_cast<int32_t>(records.size());
        r.dim = 1;
        r.type = DATA_TYPE_DATA;
        r.alloc_count = r.alloc_dim = -1;
        if (DATAAllocate(&r) != 1)
            throw std::bad_alloc();
    }
    for (size_t i = 0; i < records.size(); ++i)
        r.pvals[i] = records[i] == nullptr ? nullptr : &records[i]->live();
    self->settle_tree();
}

py::object Tree::slots()
{
    DATAstruct& r = live();
    if (r.type != DATA_TYPE_DATA)
        return view(kSlots);
    if (r.pvals == nullptr || r.count < 0 || r.dim < 0)
        return py::none();
    const size_t wanted = static_cast<size_t>(r.count) * static_cast<size_t>(r.dim);
    if (wanted > slot_count())
        throw py::value_error("count * dim is more than there are slots");
    py::tuple records(wanted);
    const std::shared_ptr<Whole> around = whole.lock();
    for (size_t i = 0; i < wanted; ++i) {
        auto* const child = static_cast<DATAstruct*>(r.pvals[i]);
        records[i] = child == nullptr ? py::none() : is_part ? around->part(child, is_locked) : py::cast(of(child));
    }
    return records;
}

std::string Tree::misfit_below() const
{
    std::vector<const Tree*> open = {this};
    std::unordered_set<const Tree*> seen;
    while (!open.empty()) {
        const Tree* const tree = open.back();
        open.pop_back();
        if (tree->is_part || !seen.insert(tree).second)
            continue;
        if (std::string why = tree->misfit(); !why.empty())
            return why;
        const DATAstruct& r = *tree->record;
        if (r.type == DATA_TYPE_DATA && r.pvals != nullptr && r.count > 0 && r.dim > 0 &&
            static_cast<size_t>(r.count) * static_cast<size_t>(r.dim) > tree->slot_count())
            return "its kind is DATA_TYPE_DATA, and its slots hold no arrays";
        for (const auto& child : tree->children)
            open.push_back(child.second.get());
    }
    return {};
}

} // namespace korvale::raw
