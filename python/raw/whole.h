#pragma once

#include <thread>
#include <unordered_map>

#include "table.h"
#include "tree.h"

// Statuses, and the records that are part of one.
namespace korvale::raw {

class Call;

/// A status record: arrays that are part of it are made objects when they are asked for.
class Whole : public std::enable_shared_from_this<Whole> {
public:
    int users = 0;
    std::thread::id user; ///< the thread of the call that works on it

    Whole() = default;
    Whole(const Whole&) = delete;
    Whole& operator=(const Whole&) = delete;
    virtual ~Whole() = default;

    /// An object that keeps the status alive; None for null.
    py::object part(DATAstruct* record, bool is_locked);
    py::object part(Data* record, bool is_locked);

    /// Before a call works on it: takes what it borrows, and refuses what the library cannot work on.
    virtual void look(Call&) {}

    /// After a call that has worked on it: takes what the library has left in it.
    virtual void take_back() {}

    /// Before the library may free or move the buffers of parts.
    void parts_stand_apart();

protected:
    /// Before the library releases the parts: views keep what they look at, and the objects are dead.
    void parts_die();
    /// The same for one of them.
    void part_dies(void* record);

private:
    std::unordered_map<void*, std::shared_ptr<Tree>> trees_;
    std::unordered_map<void*, std::shared_ptr<Table>> tables_;
};

/// A record that a status borrows: the object, and what the status points to.
template <class Object>
std::shared_ptr<Object> borrowable(std::shared_ptr<Object> object, const char* field)
{
    if (object != nullptr && object->is_part)
        throw py::value_error(std::string(field) + ": this record is part of a status");
    return object;
}

} // namespace korvale::raw
