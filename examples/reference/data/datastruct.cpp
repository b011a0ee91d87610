#include "../example.h"

EXAMPLE("DATAInitialize")
{
    DATAstruct d;
    DATAInitialize(&d);
    std::printf("count %d, room for %d, %s\n", d.count, d.alloc_count, d.next == nullptr ? "alone" : "in a list");
    // > count -1, room for -1, alone
}

EXAMPLE("DATANew")
{
    DATAstruct* d = DATANew();
    d->count = 8, d->dim = 1, d->type = DATA_TYPE_BYTE;
    std::printf("%d\n", DATAAllocate(d));
    DATADispose(d); // the buffer
    std::free(d);   // the record
    // > 1
}

EXAMPLE("DATAAllocate")
{
    DATAstruct d;
    DATAInitialize(&d);
    d.count = 100, d.dim = 3, d.type = DATA_TYPE_DOUBLE;
    DATAAllocate(&d);
    d.count = 10;
    std::printf("%d, ", DATAAllocate(&d)); // the larger buffer is used again
    std::printf("with room for %d\n", d.alloc_count);
    DATADispose(&d);
    // > 1, with room for 100
}

EXAMPLE("DATAReAllocate")
{
    DATAstruct d;
    DATAInitialize(&d);
    d.count = 2, d.dim = 1, d.type = DATA_TYPE_INT;
    DATAAllocate(&d);
    d.ivals[0] = 7, d.ivals[1] = 8;
    d.count = 3; // one more; the first two are kept
    std::printf("%d: ", DATAReAllocate(&d));
    std::printf("%d %d\n", d.ivals[0], d.ivals[1]);
    DATADispose(&d);
    // > 1: 7 8
}

EXAMPLE("DATANodeDispose")
{
    double corners[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    DATAstruct outline = {.dim = 3, .count = 3, .dvals = corners}, list;
    DATAInitialize(&list);
    list.count = list.dim = 1, list.type = DATA_TYPE_DATA;
    DATAAllocate(&list);
    list.pvals[0] = &outline;
    DATANodeDispose(&list); // the slots, but not the outline, which is ours
    std::printf("%d points are still there\n", outline.count);
    // > 3 points are still there
}

EXAMPLE("DATADispose")
{
    DATAstruct list;
    DATAInitialize(&list);
    list.count = 2, list.dim = 1, list.type = DATA_TYPE_DATA;
    DATAAllocate(&list);
    list.pvals[0] = DATANew();
    list.pvals[1] = DATANew();
    std::printf("%d, ", DATADispose(&list)); // with both children
    std::printf("count %d\n", list.count);
    // > 1, count -1
}

EXAMPLE("DATAListCount")
{
    DATAstruct last = {.dim = 3}, middle = {.next = &last}, first = {.next = &middle};
    std::printf("%d %d\n", DATAListCount(&first), DATAListCount(nullptr));
    // > 3 0
}

EXAMPLE("DATAListToDATA")
{
    DATAstruct* first = DATANew();
    first->next = DATANew();
    DATAstruct* array = DATAListToDATA(first); // owns both now
    std::printf("%d slots, the first %s\n", array->count, array->pvals[0] == first ? "as before" : "another");
    DATADispose(array);
    std::free(array);
    // > 2 slots, the first as before
}

EXAMPLE("DATACheckIfPoints")
{
    double xyz[] = {0, 0, 0, 1, 2, 3};
    DATAstruct points = {.dim = 3, .count = 2, .dvals = xyz}, pairs = {.dim = 2, .count = 3, .dvals = xyz};
    std::printf("%d %d\n", DATACheckIfPoints(&points), DATACheckIfPoints(&pairs));
    // > 1 0
}

EXAMPLE("DATACheckIfFace")
{
    double xyz[] = {0, 0, 0, 4, 0, 0, 0, 4, 0};
    DATAstruct outline = {.dim = 3, .count = 3, .dvals = xyz};
    void* slots[] = {&outline};
    DATAstruct face = {.dim = 1, .count = 1, .type = DATA_TYPE_DATA, .pvals = slots};
    std::printf("%d %d\n", DATACheckIfFace(&face), DATACheckIfFace(&outline));
    // > 1 0
}

EXAMPLE("DATACheckIfPatch")
{
    void* slots[] = {nullptr, nullptr};
    DATAstruct patch = {.dim = 1, .count = 2, .type = DATA_TYPE_DATA, .pvals = slots};
    std::printf("%d\n", DATACheckIfPatch(&patch)); // the children are not examined
    // > 1
}

EXAMPLE("DATACheckIfMesh")
{
    void* slots[5] = {};
    DATAstruct mesh = {.dim = 5, .count = 1, .type = DATA_TYPE_DATA, .pvals = slots};
    std::printf("%d %d\n", DATACheckIfMesh(&mesh), DATACheckIfPatch(&mesh));
    // > 1 0
}

EXAMPLE("DATAReverse")
{
    int32_t numbers[] = {1, 2, 3, 4, 5};
    DATAstruct d = {.dim = 1, .count = 5, .type = DATA_TYPE_INT, .ivals = numbers};
    DATAReverse(&d);
    std::printf("%d %d %d %d %d\n", numbers[0], numbers[1], numbers[2], numbers[3], numbers[4]);
    // > 5 4 3 2 1
}

EXAMPLE("DATASubReverse")
{
    double outer[] = {0, 1, 2}, hole[] = {5, 6};
    DATAstruct a = {.dim = 1, .count = 3, .dvals = outer}, b = {.dim = 1, .count = 2, .dvals = hole};
    void* slots[] = {&a, &b};
    DATAstruct plate = {.dim = 1, .count = 2, .type = DATA_TYPE_DATA, .pvals = slots};
    DATASubReverse(&plate); // each outline, not their order
    std::printf("%g %g %g and %g %g\n", outer[0], outer[1], outer[2], hole[0], hole[1]);
    // > 2 1 0 and 6 5
}
