// Many outlines in one call beside a loop over `BORDER` with one record, whose arrays are kept. `loop` leaves each
// border in the record, where the next one takes its place; `copying_loop` copies borders, flags and links to where
// they can stay. The size is the number of outlines.
#include <fstream>
#include <sstream>

#include "bench/job.h"
#include "include/korvale.h"
#include "include/korvale_c.h"

namespace korvale::bench {
namespace {

using Values = std::vector<double>;

/// Outlines one behind the other.
struct Outlines {
    Values points;
    std::vector<int64_t> starts = {0};

    size_t size() const { return starts.size() - 1; }
};

/// The outlines of 20 to 60 points of two faces, again and again.
Outlines glyphs(size_t count)
{
    std::vector<Values> found;
    for (const char* name : {"sans.txt", "serif-bold.txt"}) {
        std::ifstream file(std::string(KORVALE_EXAMPLE_DATA) + "/" + name);
        for (std::string line; std::getline(file, line);) {
            std::istringstream words(line);
            std::string word;
            int points = 0;
            if (!(words >> word >> points) || (word != "outer" && word != "hole"))
                continue;
            Values outline;
            for (int i = 0; i < points; ++i) {
                double x, y;
                need(bool(file >> x >> y));
                outline.insert(outline.end(), {0.01 * x, 0.01 * y, 0});
            }
            if (points >= 20 && points <= 60)
                found.push_back(outline);
        }
    }
    need(!found.empty());
    Outlines outlines;
    for (size_t k = 0; k < count; ++k) {
        const Values& outline = found[k % found.size()];
        outlines.points.insert(outlines.points.end(), outline.begin(), outline.end());
        outlines.starts.push_back(static_cast<int64_t>(outlines.points.size() / 3));
    }
    return outlines;
}

/// Moves all outlines in one record, and hands each border to `keep`.
template <class Keep>
void loop(BORDERStatus& status, Outlines& outlines, Keep keep)
{
    for (size_t k = 0; k < outlines.size(); ++k) {
        status.path->dvals = outlines.points.data() + 3 * outlines.starts[k];
        status.path->count = static_cast<int32_t>(outlines.starts[k + 1] - outlines.starts[k]);
        need(BORDER(&status) == 1);
        keep();
    }
}

/// The outlines, and a record that borrows one after the other.
struct Letters {
    Letters(int count, double by) : outlines(glyphs(static_cast<size_t>(count))), distance(by)
    {
        BORDERInitialize(&status);
        status.distance = distance;
        status.path->dim = 3;
        status.path->alloc_dim = status.path->alloc_count = -1; // memory of the host
    }

    Outlines outlines;
    double distance;
    BORDERStatus status;
};

/// By a hundredth of the size of the letters: outwards by 1, inwards by -1. Static, as the process is the job's own.
template <int side>
Letters& letters(int count)
{
    static Letters made(count, 0.1 * side);
    return made;
}

template <int side>
Work many(int count)
{
    const Letters& l = letters<side>(count);
    return [&l] {
        const korvale_points points = {l.outlines.points.data(), l.outlines.starts.back(), 0, 3, KORVALE_DOUBLE};
        const korvale_indices starts = {l.outlines.starts.data(), static_cast<int64_t>(l.outlines.starts.size()), 0,
                                        KORVALE_INT64};
        const korvale_numbers distances = {&l.distance, 1, 0, 1, KORVALE_DOUBLE};
        korvale_borders* borders = nullptr;
        need(korvale_offset_many(&points, &starts, &distances, nullptr, &borders, nullptr) == KORVALE_OK);
        korvale_borders_free(borders);
    };
}

template <int side>
Work looped(int count)
{
    Letters& l = letters<side>(count);
    return [&l] { loop(l.status, l.outlines, [] {}); };
}

template <int side>
Work copied(int count)
{
    Letters& l = letters<side>(count);
    return [&l] {
        Values kept;
        std::vector<uint8_t> dead;
        std::vector<int32_t> merged;
        kept.reserve(l.outlines.points.size());
        dead.reserve(l.outlines.points.size() / 3);
        merged.reserve(l.outlines.points.size() / 3);
        loop(l.status, l.outlines, [&] {
            const int32_t n = l.status.output->count;
            kept.insert(kept.end(), l.status.output->dvals, l.status.output->dvals + 3 * n);
            dead.insert(dead.end(), l.status.dead->bvals, l.status.dead->bvals + n);
            merged.insert(merged.end(), l.status.merge->ivals, l.status.merge->ivals + n);
        });
    };
}

} // namespace

std::vector<Job> many_jobs()
{
    const std::vector<int> sizes = {1000, 100000};
    return {
        {"many.letters_outwards", sizes, many<1>},
        {"many.letters_outwards@loop", sizes, looped<1>},
        {"many.letters_outwards@copying_loop", sizes, copied<1>},
        {"many.letters_inwards", sizes, many<-1>},
        {"many.letters_inwards@loop", sizes, looped<-1>},
        {"many.letters_inwards@copying_loop", sizes, copied<-1>},
    };
}

} // namespace korvale::bench
