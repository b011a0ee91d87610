// The library's own cells and those of a host look alike, and a record may lead to either. So what is known of the
// library's own, above all the planes between them, is kept aside: in a hash table by the address of the array, from
// when it is made until the library releases it. Nothing that stands in the array makes a difference.
//
// A host that releases such an array by itself may be given the same address again for one of its own. Where the heap
// tells how large a block is, another size gives that away.
//
// The table is a mutable global: a record has no place for it. Records are used by one thread each, but all threads
// share the table, so each bucket has a lock. An entry is read without the lock: only the thread that uses the record
// releases it.
#include "ray/internal/cells.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <new>

#ifdef __linux__
#include <malloc.h>
#endif

namespace korvale::ray {
namespace {

/// The size of a block of the C heap; always 0 where the heap does not tell.
size_t block_bytes([[maybe_unused]] void* block)
{
#ifdef __linux__
    return malloc_usable_size(block);
#else
    return 0;
#endif
}

/// An array of cells that the library has made. The planes of its grid stand behind it in memory.
struct MadeCells {
    MadeCells* next; // in the same bucket
    const data_list_struct* cells;
    size_t bytes; // of its block
    Grid grid;
};
static_assert(sizeof(MadeCells) % alignof(double) == 0);

class Table {
public:
    Table() = default;
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;

    /// At unload: what hosts never declassified.
    ~Table()
    {
        for (Bucket& bucket : buckets_)
            while (bucket.first != nullptr) {
                MadeCells* const following = bucket.first->next;
                std::free(bucket.first);
                bucket.first = following;
            }
    }

    MadeCells* find(const data_list_struct* cells)
    {
        Bucket& bucket = bucket_of(cells);
        const std::lock_guard lock(bucket.mutex);
        return *link_to(bucket, cells);
    }
    void add(MadeCells* made)
    {
        Bucket& bucket = bucket_of(made->cells);
        const std::lock_guard lock(bucket.mutex);
        made->next = bucket.first;
        bucket.first = made;
    }
    void remove(const data_list_struct* cells)
    {
        Bucket& bucket = bucket_of(cells);
        const std::lock_guard lock(bucket.mutex);
        MadeCells** const link = link_to(bucket, cells);
        if (MadeCells* const made = *link; made != nullptr) {
            *link = made->next;
            std::free(made);
        }
    }

private:
    static constexpr int kBucketBits = 8;
    struct Bucket {
        std::mutex mutex;
        MadeCells* first = nullptr;
    };

    /// Fibonacci hashing: a multiplication by 2^64 over the golden ratio spreads neighbouring addresses over the upper
    /// bits (Knuth, The Art of Computer Programming 3, 1973).
    Bucket& bucket_of(const data_list_struct* cells)
    {
        return buckets_[reinterpret_cast<uintptr_t>(cells) * 0x9e3779b97f4a7c15u >> (64 - kBucketBits)];
    }
    static MadeCells** link_to(Bucket& bucket, const data_list_struct* cells)
    {
        MadeCells** link = &bucket.first;
        while (*link != nullptr && (*link)->cells != cells)
            link = &(*link)->next;
        return link;
    }

    Bucket buckets_[1 << kBucketBits];
};

Table table KORVALE_MADE_AT_LOAD;

} // namespace

int32_t cells_wanted(const RayStatus& s)
{
    if (s.nx < 1 || s.ny < 1 || s.nz < 1)
        return 0;
    const int64_t slab = components(s.ny, s.nz);
    if (slab > kMostElements || components(s.nx, slab) > kMostElements)
        return 0;
    return static_cast<int32_t>(s.nx * slab);
}

Cells cells_of(const RayStatus& s)
{
    if (s.cells == nullptr)
        return {};
    const MadeCells* const made = table.find(s.cells);
    if (made == nullptr)
        return {s.cells, cells_wanted(s), nullptr};
    const size_t bytes = block_bytes(s.cells);
    if (bytes == made->bytes)
        return {s.cells, made->grid.count(), &made->grid};
    const size_t fitting = bytes / sizeof(data_list_struct); // of a block that the host has put there since
    return {s.cells, static_cast<int32_t>(std::min<size_t>(cells_wanted(s), fitting)), nullptr};
}

const Grid* remember_cells(data_list_struct* cells, const int32_t (&n)[3], const double* bbox)
{
    forget_cells(cells); // an array that a host released by itself
    void* const memory = std::malloc(sizeof(MadeCells) + static_cast<size_t>(count_planes(n)) * sizeof(double));
    if (memory == nullptr)
        return nullptr;
    auto* const made = new (memory) MadeCells;
    made->grid = grid_in(bbox, n, reinterpret_cast<double*>(made + 1));
    made->cells = cells;
    made->bytes = block_bytes(cells);
    table.add(made);
    return &made->grid;
}

void forget_cells(const data_list_struct* cells)
{
    table.remove(cells);
}

} // namespace korvale::ray
