#include "platform/host/process/SystemCallFilter.h"

#include "platform/host/process/Sanitizers.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <span>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace kestrine {

namespace {

#if defined(__x86_64__)
// The numbers of the x32 interface differ, so its calls are not listed.
constexpr std::uint32_t ownArchitecture = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr std::uint32_t ownArchitecture = AUDIT_ARCH_AARCH64;
#else
constexpr std::uint32_t ownArchitecture = 0; // no filter
#endif

/// The condition that decides about a call.
enum class Rule {
    allow,
    fail,         ///< always with the error
    bitsClear,    ///< allowed if the argument has none of the bits
    bitsSet,      ///< allowed if the argument has one of the bits
    equal,        ///< allowed if the argument has the value
    equalProcess, ///< allowed if the argument is the number of this process
    atMost,       ///< allowed up to the value
};

struct ListedCall {
    std::uint32_t number;
    Rule rule = Rule::allow;
    std::uint32_t error = 0; ///< when the rule does not allow it; 0: as if it were not listed
    unsigned argument = 0;   ///< its index; the lower 32 bits are compared
    std::uint32_t value = 0; ///< what it is compared with
};

constexpr auto fail = Rule::fail;
/// The undefined-behaviour sanitizer writes to pipes, to find out which memory can be read. The thread
/// sanitizer starts a thread of its own with the first thread of a process; that one often sleeps.
constexpr auto allowInSanitizers = builtWithSanitizers ? Rule::allow : Rule::fail;

constexpr ListedCall unorderedCalls[] = {
    // Descriptors that the process inherited or received.
    {SYS_read},
    {SYS_write},
    {SYS_pread64},
    {SYS_pwrite64},
    {SYS_readv},
    {SYS_writev},
    {SYS_lseek},
    {SYS_close},
    {SYS_fstat},
    {SYS_ftruncate},
    {SYS_recvmsg},
    {SYS_sendmsg},
    {SYS_recvfrom},
    {SYS_ppoll},
#ifdef SYS_poll
    {SYS_poll},
#endif
    // Memory.
    {SYS_munmap},
    {SYS_mremap},
    {SYS_brk},
    {SYS_memfd_create},
    {SYS_mmap, Rule::bitsClear, EACCES, 2, PROT_EXEC},
    {SYS_mprotect, Rule::bitsClear, EACCES, 2, PROT_EXEC},
    {SYS_madvise, Rule::atMost, EPERM, 2, 99}, // higher advice lets root damage memory on purpose
    // Threads and signals. A filter cannot check clone3, whose arguments are in memory; without clone3 the C
    // library uses clone. abort() signals its own process.
    {SYS_clone, Rule::bitsSet, 0, 0, CLONE_THREAD},
    {SYS_clone3, fail, ENOSYS},
    {SYS_tgkill, Rule::equalProcess, 0, 0, 0},
    {SYS_futex},
    {SYS_set_robust_list},
    {SYS_rseq},
    {SYS_rt_sigaction},
    {SYS_rt_sigprocmask},
    {SYS_rt_sigreturn},
    {SYS_sigaltstack},
    {SYS_restart_syscall},
    {SYS_sched_yield},
    {SYS_sched_getaffinity},
    {SYS_prctl, Rule::equal, EINVAL, 0, PR_SET_NAME},
    {SYS_getpid},
    {SYS_gettid},
    {SYS_exit},
    {SYS_exit_group},
    // Time, random numbers, and the amount of memory (which qsort asks for).
    {SYS_clock_gettime},
    {SYS_clock_getres},
    {SYS_clock_nanosleep},
    {SYS_gettimeofday},
    {SYS_getrandom},
    {SYS_getrusage},
    {SYS_sysinfo},
#ifdef SYS_time
    {SYS_time},
#endif
    {SYS_pipe2, allowInSanitizers},
    {SYS_nanosleep, allowInSanitizers},
    // Libraries try these calls, and continue if they fail.
    {SYS_openat, fail, EACCES},
    {SYS_newfstatat, fail, EACCES},
    {SYS_statx, fail, EACCES},
    {SYS_readlinkat, fail, EACCES},
    {SYS_faccessat, fail, EACCES},
    {SYS_faccessat2, fail, EACCES},
    {SYS_ioctl, fail, ENOTTY},
#ifdef SYS_open
    {SYS_open, fail, EACCES},
    {SYS_stat, fail, EACCES},
    {SYS_lstat, fail, EACCES},
    {SYS_readlink, fail, EACCES},
    {SYS_access, fail, EACCES},
#endif
};

constexpr std::size_t callCount = std::size(unorderedCalls);

constexpr std::array<ListedCall, callCount> orderedByNumber() {
    std::array<ListedCall, callCount> calls{};
    std::copy(std::begin(unorderedCalls), std::end(unorderedCalls), calls.begin());
    std::sort(calls.begin(), calls.end(),
              [](const ListedCall& one, const ListedCall& other) { return one.number < other.number; });
    return calls;
}
constexpr std::array<ListedCall, callCount> listedCalls = orderedByNumber();
static_assert(std::adjacent_find(listedCalls.begin(), listedCalls.end(),
                                 [](const ListedCall& one, const ListedCall& other) {
                                     return one.number == other.number;
                                 })
                  == listedCalls.end(),
              "each call is listed once");

std::uint32_t actionOf(UnlistedCalls unlisted) {
#ifdef KESTRINE_UNLISTED_CALLS_ARE_FATAL
    constexpr bool fatalAsBuilt = true;
#else
    constexpr bool fatalAsBuilt = false;
#endif
    const bool fatal =
        unlisted == UnlistedCalls::fatal || (unlisted == UnlistedCalls::asBuilt && fatalAsBuilt);
    return fatal ? SECCOMP_RET_KILL_PROCESS : SECCOMP_RET_ERRNO | ENOSYS;
}

/// The program of the filter: a binary search in the ordered calls. It must be fast, because the kernel runs
/// it once for each existing call when the filter is installed.
class FilterProgram {
public:
    explicit FilterProgram(std::uint32_t actionOfUnlisted) : unlisted_(actionOfUnlisted) {
        load(offsetof(seccomp_data, arch));
        add(BPF_JMP | BPF_JEQ | BPF_K, ownArchitecture, 1, 0);
        answer(SECCOMP_RET_KILL_PROCESS);
        load(offsetof(seccomp_data, nr));
        search(listedCalls);
    }

    sock_fprog get() { return {static_cast<unsigned short>(length_), steps_.data()}; }

private:
    std::size_t add(int code, std::uint32_t value, std::uint8_t ifTrue = 0, std::uint8_t ifFalse = 0) {
        steps_[length_] = {static_cast<std::uint16_t>(code), ifTrue, ifFalse, value};
        return length_++;
    }
    void load(std::size_t offset) { add(BPF_LD | BPF_W | BPF_ABS, static_cast<std::uint32_t>(offset)); }
    void answer(std::uint32_t action) { add(BPF_RET | BPF_K, action); }

    void search(std::span<const ListedCall> calls) {
        if (calls.size() == 1) {
            decide(calls.front());
            return;
        }
        const std::size_t half = calls.size() / 2;
        add(BPF_JMP | BPF_JGE | BPF_K, calls[half].number, 0, 1);
        const std::size_t jump = add(BPF_JMP | BPF_JA, 0);
        search(calls.first(half));
        steps_[jump].k = static_cast<std::uint32_t>(length_ - jump - 1);
        search(calls.subspan(half));
    }

    void decide(const ListedCall& call) {
        const std::uint32_t denied = call.error == 0 ? unlisted_ : SECCOMP_RET_ERRNO | call.error;
        add(BPF_JMP | BPF_JEQ | BPF_K, call.number, 1, 0);
        answer(unlisted_);
        if (call.rule == Rule::allow)
            return answer(SECCOMP_RET_ALLOW);
        if (call.rule == Rule::fail)
            return answer(denied);
        // On all supported processors, the lower half of an argument is stored first.
        load(offsetof(seccomp_data, args) + call.argument * sizeof(std::uint64_t));
        compare(call);
        answer(SECCOMP_RET_ALLOW);
        answer(denied);
    }

    /// Continues with the next step if the call is allowed, otherwise with the one after it.
    void compare(const ListedCall& call) {
        switch (call.rule) {
        case Rule::bitsClear:
            add(BPF_JMP | BPF_JSET | BPF_K, call.value, 1, 0);
            break;
        case Rule::bitsSet:
            add(BPF_JMP | BPF_JSET | BPF_K, call.value, 0, 1);
            break;
        case Rule::equalProcess:
            add(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(::getpid()), 0, 1);
            break;
        case Rule::atMost:
            add(BPF_JMP | BPF_JGT | BPF_K, call.value, 1, 0);
            break;
        default:
            add(BPF_JMP | BPF_JEQ | BPF_K, call.value, 0, 1);
        }
    }

    /// Two steps for each split, and at most six for each call.
    std::array<sock_filter, 4 + 8 * callCount> steps_{};
    std::size_t length_ = 0;
    const std::uint32_t unlisted_;
};

} // namespace

bool allowListedCallsOnly(UnlistedCalls unlisted) {
    if (ownArchitecture == 0)
        return false;
    FilterProgram program(actionOf(unlisted));
    const sock_fprog filter = program.get();
    return ::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, 0, &filter) == 0;
}

} // namespace kestrine
