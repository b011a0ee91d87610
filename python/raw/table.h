#pragma once

#include "buffers.h"

// Records of the first generation, and nodes of their lists.
namespace korvale::raw {

/// A `Data`, of its own or part of a status.
class Table : public Buffers<Data> {
public:
    using Buffers::Buffers;
    ~Table() override;
    /// A new empty one.
    static std::shared_ptr<Table> make();
};

/// A `data_list_struct`.
class ListNode : public Table {
public:
    std::shared_ptr<ListNode> following;

    using Table::Table;
    ~ListNode() override;
    static std::shared_ptr<ListNode> make();
    data_list_struct& node() const { return static_cast<data_list_struct&>(live()); }
    static void link(const std::shared_ptr<ListNode>& self, std::shared_ptr<ListNode> next);
};

} // namespace korvale::raw
