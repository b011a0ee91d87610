#pragma once

#include <cstdio>
#include <string>

#include <sys/wait.h>

namespace korvale::test {

/// How a program ended, -1 when not by itself, and what it printed on either stream.
struct Outcome {
    int status = -1;
    std::string printed;
};

/// Runs a line of the shell.
inline Outcome run_program(const std::string& line)
{
    Outcome outcome;
    FILE* pipe = popen((line + " 2>&1").c_str(), "r");
    if (pipe == nullptr)
        return outcome;
    char part[4096];
    for (size_t n = fread(part, 1, sizeof part, pipe); n > 0; n = fread(part, 1, sizeof part, pipe))
        outcome.printed.append(part, n);
    const int ended = pclose(pipe);
    outcome.status = WIFEXITED(ended) ? WEXITSTATUS(ended) : -1;
    return outcome;
}

} // namespace korvale::test
