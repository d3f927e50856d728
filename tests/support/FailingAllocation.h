// FailingAllocation: lets one allocation fail. This header replaces the global operator new of the program
// that includes it, so only one source of a program may do so.
#pragma once

#include <cstdlib>
#include <new>

namespace kestrine::testing {

/// While it exists, one allocation of this thread by `new` fails: the one after `successes` others. What
/// follows succeeds again.
class FailingAllocation {
public:
    explicit FailingAllocation(int successes) { successesBefore_ = successes; }
    ~FailingAllocation() { successesBefore_ = never; }
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    static bool isDue() { return successesBefore_ != never && successesBefore_-- == 0; }

private:
    static constexpr int never = -1;
    static inline thread_local int successesBefore_ = never;
};

} // namespace kestrine::testing

[[gnu::noinline]] void* operator new(std::size_t size) {
    void* memory =
        kestrine::testing::FailingAllocation::isDue() ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
