#include "../example.h"

EXAMPLE("DataInitialize")
{
    Data d;
    DataInitialize(&d);
    std::printf("count %d, dim %d, buffer %s\n", d.count, d.dim, d.dvals == nullptr ? "none" : "some");
    // > count -1, dim -1, buffer none
}

EXAMPLE("DataListInitialize")
{
    data_list_struct node;
    DataListInitialize(&node);
    std::printf("%d elements, %s\n", node.count, node.next == nullptr ? "nothing follows" : "something follows");
    // > -1 elements, nothing follows
}

EXAMPLE("DataNew")
{
    Data* d = DataNew();
    d->count = 2, d->dim = 3;
    std::printf("%d\n", DataAllocate(d));
    DataDispose(d); // the buffer
    std::free(d);   // the record
    // > 1
}

EXAMPLE("DataListNew")
{
    data_list_struct head;
    DataListInitialize(&head);
    head.next = DataListNew(); // owned by the list
    std::printf("%d\n", head.next->count);
    DataListDispose(&head);
    // > -1
}

EXAMPLE("DataAllocate")
{
    Data d;
    DataInitialize(&d);
    d.count = 100, d.dim = 3, d.type = DATA_TYPE_DOUBLE;
    if (DataAllocate(&d) == 1)
        d.dvals[3 * 99 + 2] = 1.5; // z of the last of 100 points
    std::printf("%g\n", d.dvals[299]);
    DataDispose(&d);
    std::printf("%d\n", DataAllocate(&d)); // an empty record has no size to allocate
    // > 1.5
    // > -1
}

EXAMPLE("DataDispose")
{
    Data d;
    DataInitialize(&d);
    d.count = 10, d.dim = 1, d.type = DATA_TYPE_INT;
    DataAllocate(&d);
    DataDispose(&d);
    std::printf("count %d, buffer %s\n", d.count, d.ivals == nullptr ? "released" : "held");
    // > count -1, buffer released
}

EXAMPLE("DataListDispose")
{
    data_list_struct head;
    DataListInitialize(&head);
    head.next = DataListNew();
    head.next->next = DataListNew();
    DataListDispose(&head);
    std::printf("%s\n", head.next == nullptr ? "only the head is left" : "more");
    // > only the head is left
}

EXAMPLE("DataReverse")
{
    double corners[] = {0, 0, 4, 0, 4, 4};
    Data d = {.dim = 2, .count = 3, .dvals = corners};
    DataReverse(&d); // the outline runs the other way round
    std::printf("%g %g, %g %g, %g %g\n", corners[0], corners[1], corners[2], corners[3], corners[4], corners[5]);
    // > 4 4, 4 0, 0 0
}
