#include "platform/host/process/ProcessorCount.h"

#include <algorithm>
#include <array>
#include <sched.h>

namespace kestrine {

unsigned processorCount() {
    // The call fails unless there is room for all processors that the kernel can handle; 8192 is the highest
    // number that it supports.
    std::array<cpu_set_t, 8192 / CPU_SETSIZE> sets{};
    if (::sched_getaffinity(0, sizeof sets, sets.data()) != 0)
        return 1;
    return static_cast<unsigned>(std::max(1, CPU_COUNT_S(sizeof sets, sets.data())));
}

} // namespace kestrine
