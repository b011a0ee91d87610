#pragma once

#include <vector>

#include "border/border.h"
#include "data/data.h"
#include "data/datastruct.h"
#include "tests/support/outlines.h"

// Status records for tests, released with all that hangs off them, and one way to run either flavour.
namespace korvale::test {

/// A `BORDERStatus` on the stack. Passes as a pointer to the record.
class OwnedBORDERStatus {
public:
    OwnedBORDERStatus();
    explicit OwnedBORDERStatus(const Coordinates& path);
    ~OwnedBORDERStatus();
    OwnedBORDERStatus(const OwnedBORDERStatus&) = delete;
    OwnedBORDERStatus& operator=(const OwnedBORDERStatus&) = delete;

    operator BORDERStatus*() { return &status_; }
    BORDERStatus* operator->() { return &status_; }
    void set_path(const Coordinates& points);

private:
    BORDERStatus status_;
};

/// A `BorderStatus` on the stack. Passes as a pointer to the record.
class OwnedBorderStatus {
public:
    OwnedBorderStatus();
    explicit OwnedBorderStatus(const Coordinates& path);
    ~OwnedBorderStatus();
    OwnedBorderStatus(const OwnedBorderStatus&) = delete;
    OwnedBorderStatus& operator=(const OwnedBorderStatus&) = delete;

    operator BorderStatus*() { return &status_; }
    BorderStatus* operator->() { return &status_; }
    void set_path(const Coordinates& points);

private:
    BorderStatus status_;
};

/// Runs a sweep, so that the library keeps working memory for those to come and they leave no block behind.
void warm_up();

/// Releases a record and what hangs off it; null does nothing.
void release(Data* d);
void release(DATAstruct* d);

/// Makes `d` an array of points [n 3].
void fill_points(DATAstruct& d, const Coordinates& points);
void fill_points(Data& d, const Coordinates& points);

/// The points of an array of doubles [n 3].
template <class Array>
Coordinates points_of(const Array* d)
{
    if (d == nullptr || d->dvals == nullptr || d->count < 1)
        return {};
    return Coordinates(d->dvals, d->dvals + 3 * d->count);
}

/// What to offset and how.
struct Outline {
    Coordinates path;
    double distance = 1.0;
    bool keep_collapsed = true;
    bool split_events = true;
};

struct Result {
    int code;
    Coordinates border;
};

/// The two flavours, for tests that hold for both.
struct FirstFlavour {
    using Status = OwnedBorderStatus;
    static int run(BorderStatus* status) { return Border(status); }
};
struct SecondFlavour {
    using Status = OwnedBORDERStatus;
    static int run(BORDERStatus* status) { return BORDER_BORDER(status); }
};

template <class Flavour>
Result border_of(const Outline& outline)
{
    typename Flavour::Status status(outline.path);
    status->distance = outline.distance;
    status->keep_collapsed = outline.keep_collapsed;
    status->split_events = outline.split_events;
    const int code = Flavour::run(status);
    return {code, points_of(status->output)};
}

} // namespace korvale::test
