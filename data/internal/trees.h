#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "data/datastruct.h"
#include "data/internal/buffers.h"

// Trees of arrays. A tree may be deeper than the machine's stack, so nothing that walks it recurses.
namespace korvale::data {

/// The number of children by count alone, whatever dim is: one slot per element. 0 where the slots do not all exist.
inline int32_t children_by_count(const DATAstruct& d)
{
    const bool are_there = d.pvals != nullptr && (is_wrapped(d) || d.count <= room(d));
    return are_there && d.count > 0 ? d.count : 0;
}

inline DATAstruct* child(const DATAstruct& d, int32_t slot)
{
    return static_cast<DATAstruct*>(d.pvals[slot]);
}

/// Releases the buffers of `d`, and of every record that it reaches through the slots of its capacity and through
/// lists, and frees those records. A record that is reached several times is freed once. `d` itself is left for
/// `DATAInitialize`.
void release_tree(DATAstruct& d);

/// A stack of trivially copyable entries. The first kNearby are stored inside it, more on the heap.
template <class Entry, int kNearby>
class Stack {
public:
    Stack() = default;
    ~Stack()
    {
        if (entries_ != nearby_)
            std::free(entries_);
    }
    Stack(const Stack&) = delete;
    Stack& operator=(const Stack&) = delete;

    bool is_empty() const { return size_ == 0; }
    Entry& top() { return entries_[size_ - 1]; }
    void pop() { --size_; }

    /// False, with nothing pushed, when the heap is exhausted.
    bool push(const Entry& entry)
    {
        if (size_ == room_ && !grow())
            return false;
        entries_[size_++] = entry;
        return true;
    }

private:
    bool grow()
    {
        auto* const larger = static_cast<Entry*>(std::malloc(2 * static_cast<size_t>(room_) * sizeof(Entry)));
        if (larger == nullptr)
            return false;
        std::memcpy(larger, entries_, static_cast<size_t>(size_) * sizeof(Entry));
        if (entries_ != nearby_)
            std::free(entries_);
        entries_ = larger;
        room_ *= 2;
        return true;
    }

    Entry nearby_[kNearby];
    Entry* entries_ = nearby_;
    int64_t size_ = 0, room_ = kNearby;
};

/// Levels of a tree that are walked without heap memory.
constexpr int kNearbyLevels = 64;

/// Walks a tree depth first, slot after slot. `visit(node)` does the work of a leaf and returns the number of children;
/// `child_of(node, slot)` is one of them. More than kNearbyLevels levels need the heap: where it is exhausted, what
/// lies deeper is skipped.
template <class Node, class Visit, class ChildOf>
void walk_tree(Node node, Visit visit, ChildOf child_of)
{
    struct Level {
        Node node;
        int32_t next, count;
    };
    Stack<Level, kNearbyLevels> path; // levels with slots left; a last child pushes none, as a tail call
    for (;;) {
        const int32_t children = visit(node);
        if (children == 1 || (children > 1 && path.push({node, 1, children}))) {
            node = child_of(node, 0);
            continue;
        }
        if (path.is_empty())
            return;
        Level& level = path.top();
        node = child_of(level.node, level.next++);
        if (level.next == level.count)
            path.pop();
    }
}

} // namespace korvale::data
