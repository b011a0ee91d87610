// Releasing a tree of arrays. First all records are gathered, then they are freed: a slot that is looked at later may
// lead to any of them. The gathered records hold the lists themselves:
//
// - A gathered record is marked by pointing its `dvals`, freed before, at `mark_`.
// - Its `next` then links it into `waiting_` (slots still to be followed), later into `gathered_` (freed at the end).
//
// So gathering needs no memory, and depth does not matter.
#include "data/internal/trees.h"

namespace korvale::data {
namespace {

/// The children that disposal follows: all slots of the capacity of an array of arrays.
int64_t owned_slots(const DATAstruct& d)
{
    if (d.type != DATA_TYPE_DATA || d.pvals == nullptr || is_wrapped(d))
        return 0;
    const int64_t slots = components(d.alloc_count, d.alloc_dim);
    return slots <= kMostElements ? slots : 0;
}

class Gathering {
public:
    ~Gathering()
    {
        while (gathered_ != nullptr) {
            DATAstruct* const record = gathered_;
            gathered_ = record->next;
            std::free(record);
        }
    }

    /// Takes the children and the list of `d`, which is not freed itself, and all that hangs on them.
    void take_tree(DATAstruct& d)
    {
        take(d);
        take_list(d.next);
        take_children(d);
        while (waiting_ != nullptr) {
            DATAstruct* const record = waiting_;
            waiting_ = record->next;
            take_children(*record);
            record->next = gathered_;
            gathered_ = record;
        }
    }

private:
    bool is_taken(const DATAstruct& d) const { return d.dvals == &mark_; }

    void take(DATAstruct& d)
    {
        free_buffer(d.dvals);
        free_buffer(d.ivals);
        free_buffer(d.bvals);
        d.dvals = &mark_;
    }

    /// Takes `first` and the records along its `next`, up to one that was taken before.
    void take_list(DATAstruct* first)
    {
        if (first == nullptr || is_taken(*first))
            return;
        DATAstruct* last = first;
        for (take(*last); last->next != nullptr && !is_taken(*last->next); last = last->next)
            take(*last->next);
        last->next = waiting_;
        waiting_ = first;
    }

    void take_children(DATAstruct& d)
    {
        const int64_t n = owned_slots(d);
        for (int64_t i = 0; i < n; ++i)
            take_list(static_cast<DATAstruct*>(d.pvals[i]));
        free_buffer(d.pvals);
    }

    double mark_ = 0.0; ///< only its address counts: no buffer lies there
    DATAstruct* waiting_ = nullptr;
    DATAstruct* gathered_ = nullptr;
};

} // namespace

void release_tree(DATAstruct& d)
{
    Gathering gathering;
    gathering.take_tree(d);
}

} // namespace korvale::data
