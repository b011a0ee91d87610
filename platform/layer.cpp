// The thin layer for systems without one: handles that tell libraries apart, identifiers of window messages by name,
// and the random generator of the process. It stays loaded once it was loaded, so all of this is the process's.
//
// All state is constant-initialised, since libraries register themselves while they are loaded. Where a mutex is not,
// it is made before them.
#include "platform/layer.h"

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "platform/internal/generator.h"

using korvale::platform::draw_after;
using korvale::platform::following;
using korvale::platform::number_of;

namespace {

constexpr unsigned kProcessAttach = 1;

// Handles only need to be distinct while in use, so a heap byte each is enough.
void* new_handle()
{
    return std::malloc(1);
}

// Names of window messages, in order of registration. The names are copied and kept for the life of the process.
constexpr unsigned kFirstMessage = 0xC000;
constexpr unsigned kMostMessages = 0x4000;

struct MessageName {
    MessageName* next;
    unsigned identifier;
    char text[1];
};

std::mutex message_lock __attribute__((init_priority(500)));
MessageName* messages = nullptr;

std::atomic<uint32_t> random_state{1};

} // namespace

void* MwInitDLL(const char*, MwEntryPoint entry, MwEntryPoint, const MwDependancyNode*)
{
    void* const handle = new_handle();
    if (entry != nullptr)
        entry(handle, kProcessAttach, nullptr);
    return handle;
}

void MwDllInPostConstruct(void*)
{
}

void MwDllInPreDestruct(void*)
{
}

void MwDllInPostDestruct(void* handle)
{
    std::free(handle);
}

void MwApplicationBugCheck(const char* message)
{
    std::fprintf(stderr, "%s\n", message);
    std::abort();
}

int DisableThreadLibraryCalls(void*)
{
    return 1;
}

unsigned RegisterWindowMessageA(const char* name)
{
    if (name == nullptr)
        return 0;
    const std::lock_guard<std::mutex> hold(message_lock);
    for (const MessageName* m = messages; m != nullptr; m = m->next)
        if (std::strcmp(m->text, name) == 0)
            return m->identifier;
    const unsigned identifier = messages == nullptr ? kFirstMessage : messages->identifier + 1;
    if (identifier == kFirstMessage + kMostMessages)
        return 0;
    auto* const added = static_cast<MessageName*>(std::malloc(sizeof(MessageName) + std::strlen(name)));
    if (added == nullptr)
        return 0;
    added->next = messages;
    added->identifier = identifier;
    std::strcpy(added->text, name);
    messages = added;
    return identifier;
}

void Mwsrand(unsigned seed)
{
    random_state.store(seed, std::memory_order_relaxed);
}

// Not an atomic read-modify-write: a compare-and-swap would take most of the time of a draw. Threads that draw at the
// same time may be given the same number, which one generator for the whole process does not rule out.
int Mwrand()
{
    const uint32_t next = following(random_state.load(std::memory_order_relaxed));
    random_state.store(next, std::memory_order_relaxed);
    return number_of(next);
}

// Aliases of the functions of this file. The names `Mwrand` and `Mwsrand` may be interposed by a host, these may not.
extern "C" {
[[gnu::alias("Mwrand"), gnu::visibility("hidden")]] int own_rand() noexcept;
[[gnu::alias("Mwsrand"), gnu::visibility("hidden")]] void own_srand(unsigned) noexcept;
}

int korvale_draw_many(int (*rand)(), void (*srand)(unsigned), int* numbers, int count)
{
    if (rand != own_rand || srand != own_srand)
        return 0;
    const uint32_t state = random_state.load(std::memory_order_relaxed);
    random_state.store(draw_after(state, numbers, count), std::memory_order_relaxed);
    return 1;
}
