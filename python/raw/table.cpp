#include "table.h"

#include <utility>

namespace korvale::raw {

namespace {

template <class Object, class R>
std::shared_ptr<Object> taken(R* record)
{
    if (record == nullptr)
        throw std::bad_alloc();
    return std::make_shared<Object>(record);
}

} // namespace

Table::~Table()
{
    let_go();
}

std::shared_ptr<Table> Table::make()
{
    return taken<Table>(DataNew());
}

ListNode::~ListNode()
{
    // One by one: a list may be longer than the stack is deep.
    std::shared_ptr<ListNode> next = std::move(following);
    while (next != nullptr && next.use_count() == 1)
        next = std::shared_ptr<ListNode>(std::move(next->following));
}

std::shared_ptr<ListNode> ListNode::make()
{
    return taken<ListNode>(DataListNew());
}

void ListNode::link(const std::shared_ptr<ListNode>& self, std::shared_ptr<ListNode> next)
{
    for (const ListNode* n = is_held_elsewhere(self) ? next.get() : nullptr; n != nullptr; n = n->following.get())
        if (n == self.get())
            throw py::value_error("next: the list would run in a circle");
    if (next == self)
        throw py::value_error("next: the list would run in a circle");
    self->node().next = next == nullptr ? nullptr : &next->node();
    self->following = std::move(next);
}

} // namespace korvale::raw
