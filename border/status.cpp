// The records of the sweep and their defaults, each set in one place. Hosts compile against the layout, which is pinned
// here.
#include "border/status.h"

#include <cstddef>

#include "platform/internal/pointers.h"

static_assert(korvale::platform::kNarrowPointers ||
              (sizeof(BorderStatus) == 56 && offsetof(BorderStatus, output) == 8 &&
               offsetof(BorderStatus, height) == 16 && offsetof(BorderStatus, distance) == 24 &&
               offsetof(BorderStatus, keep_collapsed) == 32 && offsetof(BorderStatus, split_events) == 40 &&
               offsetof(BorderStatus, reserved3) == 48));
static_assert(korvale::platform::kNarrowPointers ||
              (sizeof(BORDERStatus) == 104 && offsetof(BORDERStatus, flat) == 16 &&
               offsetof(BORDERStatus, merge) == 72 && offsetof(BORDERStatus, height) == 80 &&
               offsetof(BORDERStatus, distance) == 88 && offsetof(BORDERStatus, keep_collapsed) == 96 &&
               offsetof(BORDERStatus, split_events) == 100));

void BorderInitialize(BorderStatus* status)
{
    if (status == nullptr)
        return;
    status->path = DataNew();
    status->output = nullptr;
    status->height = 0.0;
    status->distance = 1.0;
    status->keep_collapsed = 1;
    status->reserved1 = 1;
    status->split_events = 1;
    status->reserved2 = 5;
    status->reserved3 = 0;
}

void BORDERInitialize(BORDERStatus* status)
{
    if (status == nullptr)
        return;
    status->path = DATANew();
    status->output = DATANew();
    status->flat = DATANew();
    status->velocity = DATANew();
    status->direction = DATANew();
    status->line = DATANew();
    status->dead = DATANew();
    status->length = DATANew();
    status->rate = DATANew();
    status->merge = DATANew();
    status->height = 0.0;
    status->distance = 1.0;
    status->keep_collapsed = 1;
    status->split_events = 1;
}
