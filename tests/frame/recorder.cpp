#include "tests/frame/recorder.h"

#include <cstdio>
#include <cstdlib>

namespace {

// Kept on the heap for good: the library announces its end after this file's own objects would be gone.
std::vector<std::string>& lines()
{
    static auto* const kept = new std::vector<std::string>;
    return *kept;
}

recorder::Registration registered;
char handle_mark;
char instance_mark;
void (*action_during_calls)() = nullptr;

void record(const std::string& line)
{
    lines().push_back(line);
    if (const char* path = std::getenv("KORVALE_CALLS")) {
        std::FILE* const file = std::fopen(path, "a");
        if (file == nullptr)
            std::abort();
        std::fprintf(file, "%s\n", line.c_str());
        std::fclose(file);
    }
    if (action_during_calls != nullptr)
        action_during_calls();
}

std::string with_handle(const char* function, const void* handle)
{
    return std::string(function) + (handle == &handle_mark ? " handle" : " something else");
}

} // namespace

namespace recorder {

const std::vector<std::string>& calls()
{
    return lines();
}

void forget()
{
    lines().clear();
}

const Registration& registration()
{
    return registered;
}

void* handle()
{
    return &handle_mark;
}

void* instance()
{
    return &instance_mark;
}

void during_calls(void (*action)())
{
    action_during_calls = action;
}

} // namespace recorder

// The only one of its libraries that this layer has a node for.
extern "C" {
KORVALE_API extern const MwDependancyNode Mw___kernel32_DependancyNode;
const MwDependancyNode Mw___kernel32_DependancyNode = {};
}

void* MwInitDLL(const char* name, MwEntryPoint entry, MwEntryPoint raw_entry, const MwDependancyNode* node)
{
    registered = {entry, raw_entry, node};
    record(std::string("MwInitDLL ") + name);
    record("entry point returns " + std::to_string(entry(&instance_mark, 1, nullptr)));
    return &handle_mark;
}

void MwDllInPostConstruct(void* handle)
{
    record(with_handle("MwDllInPostConstruct", handle));
}

void MwDllInPreDestruct(void* handle)
{
    record(with_handle("MwDllInPreDestruct", handle));
}

void MwDllInPostDestruct(void* handle)
{
    record(with_handle("MwDllInPostDestruct", handle));
}

void MwApplicationBugCheck(const char* message)
{
    record(std::string("MwApplicationBugCheck") + message);
}

int DisableThreadLibraryCalls(void* instance)
{
    record(std::string("DisableThreadLibraryCalls") + (instance == &instance_mark ? " instance" : " something else"));
    return 1;
}

unsigned RegisterWindowMessageA(const char* name)
{
    record(std::string("RegisterWindowMessageA ") + name);
    return 0xC123;
}

void Mwsrand(unsigned seed)
{
    record("Mwsrand " + std::to_string(seed));
}

int Mwrand()
{
    record("Mwrand");
    return 0;
}
