#pragma once

#include <unordered_map>
#include <vector>

#include "buffers.h"

// Records of the second generation, with those in their slots and lists.
namespace korvale::raw {

/// A `DATAstruct`. Records in its slots and its list are held by it, so that the library never owns them.
class Tree : public Buffers<DATAstruct> {
public:
    std::unordered_map<DATAstruct*, std::shared_ptr<Tree>> children; ///< of all slots
    std::shared_ptr<Tree> following;

    using Buffers::Buffers;
    ~Tree() override;
    static std::shared_ptr<Tree> make();
    /// The object of a record from the heap; takes the record over where there is none yet.
    static std::shared_ptr<Tree> of(DATAstruct* record);

    static void link(const std::shared_ptr<Tree>& self, std::shared_ptr<Tree> next);
    static void fill(const std::shared_ptr<Tree>& self, const std::vector<std::shared_ptr<Tree>>& records);
    py::object slots();

    /// After a call: holds exactly the records that are in the slots now.
    void settle_tree();
    /// Forgets children and list, which belong to those who hold them.
    void part_company();
    /// A sentence that says what is wrong with this array or one below it, or nothing.
    std::string misfit_below() const;
    /// Slots of its capacity; 0 unless it is an array of arrays.
    size_t slot_count() const;

private:
    bool reaches(const Tree& wanted) const;
};

} // namespace korvale::raw
