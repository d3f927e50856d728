// Finds the vector targets that this processor supports: the three functions that Highway's dispatch needs.
// They replace those of Highway's shared library, which measures the clock of the processor for 3.5 ms when
// it is loaded. That is more time than everything else when the program starts.

#include <hwy/targets.h>

#include <atomic>

namespace hwy {

namespace {

std::atomic<int64_t> forcedTargets = 0;

#if HWY_ARCH_X86

bool hasSSE4() {
    return __builtin_cpu_supports("sse4.1") && __builtin_cpu_supports("sse4.2")
           && __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("aes");
}

/// The target also needs conversions of half floats, which every processor with AVX2 and FMA has.
bool hasAVX2() {
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2")
           && __builtin_cpu_supports("fma");
}

bool hasAVX3() {
    return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl")
           && __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512bw");
}

/// Each target includes the ones before it.
int64_t detectTargets() {
    __builtin_cpu_init();
    int64_t targets = HWY_STATIC_TARGET;
    if (!hasSSE4())
        return targets;
    targets |= HWY_SSE4;
    if (!hasAVX2())
        return targets;
    targets |= HWY_AVX2;
    return hasAVX3() ? targets | HWY_AVX3 : targets;
}

#else

int64_t detectTargets() { return HWY_STATIC_TARGET; }

#endif

} // namespace

int64_t SupportedTargets() {
    static const int64_t detected = detectTargets();
    const int64_t forced = forcedTargets;
    return forced != 0 ? forced : detected;
}

void SetSupportedTargetsForTest(int64_t targets) {
    forcedTargets = targets;
    GetChosenTarget().DeInit();
}

ChosenTarget& GetChosenTarget() {
    static ChosenTarget chosen;
    return chosen;
}

} // namespace hwy
