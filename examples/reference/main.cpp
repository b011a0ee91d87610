#include "example.h"

// Runs all examples, each under a line with its entries.
int main()
{
    for (const Example& example : all_examples()) {
        std::printf("= %s\n", example.entries);
        example.run();
    }
}
