#include "../example.h"

EXAMPLE("EqParseEquation")
{
    EquationSystem es;
    EqSystemInitialize(&es);
    char names[] = "x, y", text[] = "y = 2 * x + 1", misprint[] = "y = 2 * z";
    EqParseVariables(&es, names, 0);
    std::printf("%d items\n", EqParseEquation(&es, text)); // y, 2, x, *, 1, +
    std::printf("%d: there is no z\n", EqParseEquation(&es, misprint));
    EqSystemDispose(&es);
    // > 6 items
    // > -1: there is no z
}

EXAMPLE("new_bi_item op_isp op_icp")
{
    std::printf("+ %d, * %d, ^ %d, ( %d\n", op_isp(0), op_isp(2), op_isp(4), op_isp(-1));
    std::printf("^ arrives with %d, so it groups from the right\n", op_icp(4));

    int32_t kind[8] = {}, operand[8] = {}, stack[8] = {};
    DATAstruct kinds = {.dim = 1, .count = 8, .type = DATA_TYPE_INT, .ivals = kind};
    DATAstruct operands = {.dim = 1, .count = 8, .type = DATA_TYPE_INT, .ivals = operand};
    DATAstruct waiting = {.dim = 1, .count = 8, .type = DATA_TYPE_INT, .ivals = stack};
    int top = 8, values = 3, next = 0; // a * b + c: the + moves the * to the program
    new_bi_item(2, &top, &values, &next, &kinds, &operands, &waiting);
    new_bi_item(0, &top, &values, &next, &kinds, &operands, &waiting);
    std::printf("%d item of kind %d, function %d; %d waits\n", next, kind[0], operand[0], stack[top]);
    // > + 2, * 3, ^ 4, ( 0
    // > ^ arrives with 5, so it groups from the right
    // > 1 item of kind 9, function 2; 0 waits
}
