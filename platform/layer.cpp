// The thin layer for systems without one: handles that tell libraries apart, identifiers of window messages by name,
// and the random generator of the process. It stays loaded once it was loaded, so all of this is the process's.
//
// All state is constant-initialised, since libraries register themselves while they are loaded.
#include "platform/layer.h"

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

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

std::mutex message_lock;
MessageName* messages = nullptr;

// The classic 15-bit linear congruential generator, one state for the process.
constexpr uint32_t kMultiplier = 214013;
constexpr uint32_t kIncrement = 2531011;
std::atomic<uint32_t> random_state{1};

constexpr uint32_t following(uint32_t state)
{
    return state * kMultiplier + kIncrement;
}

// Four steps at once: the increment is where they lead from 0.
constexpr uint32_t kMultiplierOfFour = kMultiplier * kMultiplier * kMultiplier * kMultiplier;
constexpr uint32_t kIncrementOfFour = following(following(following(following(0))));

constexpr int number_of(uint32_t state)
{
    return static_cast<int>(state >> 16 & 0x7fff);
}

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

// Threads that draw at the same time may be given the same number, which costs nothing that one generator for the
// process promises; a locked instruction would cost most of a draw.
int Mwrand()
{
    const uint32_t next = following(random_state.load(std::memory_order_relaxed));
    random_state.store(next, std::memory_order_relaxed);
    return number_of(next);
}

// The functions of this file, whoever stands in for their names.
extern "C" {
[[gnu::alias("Mwrand"), gnu::visibility("hidden")]] int own_rand() noexcept;
[[gnu::alias("Mwsrand"), gnu::visibility("hidden")]] void own_srand(unsigned) noexcept;
}

int korvale_draw_many(int (*rand)(), void (*srand)(unsigned), int* numbers, int count)
{
    if (rand != own_rand || srand != own_srand)
        return 0;
    uint32_t state = random_state.load(std::memory_order_relaxed);
    uint32_t a = following(state), b = following(a), c = following(b), d = following(c);
    int i = 0;
    for (; i + 4 <= count; i += 4) { // four steps that need not wait for each other
        numbers[i] = number_of(a);
        numbers[i + 1] = number_of(b);
        numbers[i + 2] = number_of(c);
        numbers[i + 3] = number_of(d);
        state = d;
        a = a * kMultiplierOfFour + kIncrementOfFour;
        b = b * kMultiplierOfFour + kIncrementOfFour;
        c = c * kMultiplierOfFour + kIncrementOfFour;
        d = d * kMultiplierOfFour + kIncrementOfFour;
    }
    for (; i < count; ++i) {
        state = following(state);
        numbers[i] = number_of(state);
    }
    random_state.store(state, std::memory_order_relaxed);
    return 1;
}
