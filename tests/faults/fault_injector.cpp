// Runs a program and makes one of its system calls fail, or ends it there. Follows its threads and children.
//   kestrine_fault_injector [OPTION...] -- PROGRAM [ARGUMENT...]
//   --trace FILE     writes one line per call: PROCESS CALL NUMBER RESULT ARGUMENT(6) PATH...
//   --at PROCESS:CALL:NUMBER:FAULT   may be given several times; only if that call has this number
// PROCESS is 0 for the program itself, and 1, 2, ... for its threads and children in the order of their
// start. CALL counts the calls of that process from 0; those of the program count from the begin of main.
// Calls of poll are not counted, because their number depends on the speed of other processes. FAULT is
//   errno=N    the call is not made and fails with this error
//   errno=N+   so do all later calls of the same number, in every process
//   short      the call gets only 1 byte to read or write
//   kill       the process is killed before the call
//   killed     the process is killed after the call
//   act        the shell runs the command in KESTRINE_FAULT_ACTION before the call, as another program might
// Ends with the status of the program; with 200 if it was killed, 201 if it ended by another signal, and 202
// if nothing was injected although it should have been.
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <string>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int endedByKill = 200, endedBySignal = 201, nothingInjected = 202, cannotRun = 203;

[[noreturn]] void fail(const char* what) {
    std::perror(what);
    std::exit(cannotRun);
}

struct Fault {
    enum class Kind { error, shortened, killBefore, killAfter, action } kind;
    unsigned long long call = 0;
    int error = 0;
    bool lastsFromThenOn = false;
};

struct Place {
    unsigned process, call;
    auto operator<=>(const Place&) const = default;
};

struct Plan {
    std::map<Place, Fault> faults;
    std::FILE* trace = nullptr;
    char** command = nullptr;
};

/// A process or thread of the program.
struct Tracee {
    unsigned ordinal = 0;
    unsigned calls = 0;    ///< so far
    bool hasBegun = false; ///< main, in the first process; always in others
    bool isInCall = false;
    bool isFailing = false; ///< the call at hand gets `error` as its result
    bool diesAfter = false;
    int error = 0;
    __ptrace_syscall_info entry{};
};

class Injector {
public:
    explicit Injector(Plan plan) : plan_(std::move(plan)) {}

    int run() {
        start();
        for (;;) {
            int status = 0;
            const pid_t pid = ::waitpid(-1, &status, __WALL);
            if (pid < 0)
                return statusOfProgram();
            if (WIFEXITED(status) || WIFSIGNALED(status)) {
                if (pid == program_)
                    programStatus_ = status;
                tracees_.erase(pid);
            } else {
                resume(pid, handleStop(pid, status));
            }
        }
    }

private:
    void start() {
        program_ = ::fork();
        if (program_ < 0)
            fail("fork");
        if (program_ == 0) {
            ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
            ::raise(SIGSTOP);
            ::execv(plan_.command[0], plan_.command);
            ::_exit(127);
        }
        int status = 0;
        ::waitpid(program_, &status, 0);
        const long options = PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACECLONE | PTRACE_O_TRACEFORK
                             | PTRACE_O_TRACEVFORK | PTRACE_O_TRACEEXEC | PTRACE_O_EXITKILL;
        if (::ptrace(PTRACE_SETOPTIONS, program_, nullptr, options) != 0)
            fail("ptrace");
        traceeOf(program_);
        resume(program_, 0);
    }

    Tracee& traceeOf(pid_t pid) {
        const auto [found, isNew] = tracees_.try_emplace(pid);
        if (isNew) {
            found->second.ordinal = started_++;
            found->second.hasBegun = pid != program_;
        }
        return found->second;
    }

    static void resume(pid_t pid, int signal) { ::ptrace(PTRACE_SYSCALL, pid, nullptr, signal); }

    /// Returns the signal to deliver.
    int handleStop(pid_t pid, int status) {
        const bool isNew = !tracees_.contains(pid);
        Tracee& tracee = traceeOf(pid);
        const int signal = WSTOPSIG(status);
        if (signal == (SIGTRAP | 0x80)) {
            handleCall(pid, tracee);
            return 0;
        }
        const bool isEvent = signal == SIGTRAP && (status >> 16) != 0;
        const bool isFirstStop = isNew && signal == SIGSTOP;
        return isEvent || isFirstStop || signal == SIGTRAP ? 0 : signal;
    }

    void handleCall(pid_t pid, Tracee& tracee) {
        __ptrace_syscall_info info{};
        if (::ptrace(PTRACE_GET_SYSCALL_INFO, pid, sizeof info, &info) <= 0)
            return;
        if (info.op == PTRACE_SYSCALL_INFO_ENTRY)
            enter(pid, tracee, info);
        else if (info.op == PTRACE_SYSCALL_INFO_EXIT && tracee.isInCall)
            leave(pid, tracee, info);
    }

    void enter(pid_t pid, Tracee& tracee, const __ptrace_syscall_info& info) {
        // The first call of main asks whether standard input is open. Nothing before it does.
        const bool isFirstOfMain =
            info.entry.nr == SYS_fcntl && info.entry.args[0] == 0 && info.entry.args[1] == F_GETFD;
        tracee.hasBegun = tracee.hasBegun || isFirstOfMain;
        // How often a process looks for a message depends on how fast the other one is.
        tracee.isInCall = tracee.hasBegun && info.entry.nr != SYS_poll;
        if (!tracee.isInCall)
            return;
        tracee.entry = info;
        const auto planned = plan_.faults.find({tracee.ordinal, tracee.calls});
        if (planned != plan_.faults.end() && planned->second.call == info.entry.nr) {
            ++injected_;
            begin(pid, tracee, planned->second);
        } else if (const auto lasting = lasting_.find(info.entry.nr); lasting != lasting_.end()) {
            skip(pid, tracee, lasting->second);
        }
        ++tracee.calls;
    }

    void begin(pid_t pid, Tracee& tracee, const Fault& fault) {
        switch (fault.kind) {
        case Fault::Kind::error:
            if (fault.lastsFromThenOn)
                lasting_[tracee.entry.entry.nr] = fault.error;
            return skip(pid, tracee, fault.error);
        case Fault::Kind::shortened:
            return setArgument(pid, 1);
        case Fault::Kind::killBefore:
            ::kill(pid, SIGKILL);
            return;
        case Fault::Kind::killAfter:
            tracee.diesAfter = true;
            return;
        case Fault::Kind::action:
            (void)!std::system(std::getenv("KESTRINE_FAULT_ACTION"));
            return;
        }
    }

    /// Another call, which every filter of system calls permits, takes the place of the one that fails.
    void skip(pid_t pid, Tracee& tracee, int error) {
        tracee.isFailing = true;
        tracee.error = error;
        if (tracee.entry.entry.nr == SYS_close)
            return; // Linux closes the descriptor even if it reports an error
        user_regs_struct registers{};
        ::ptrace(PTRACE_GETREGS, pid, nullptr, &registers);
        registers.orig_rax = SYS_getpid;
        ::ptrace(PTRACE_SETREGS, pid, nullptr, &registers);
    }

    /// The third argument is the number of bytes in read, write, pread64 and pwrite64.
    static void setArgument(pid_t pid, unsigned long long count) {
        user_regs_struct registers{};
        ::ptrace(PTRACE_GETREGS, pid, nullptr, &registers);
        registers.rdx = std::min<unsigned long long>(registers.rdx, count);
        ::ptrace(PTRACE_SETREGS, pid, nullptr, &registers);
    }

    void leave(pid_t pid, Tracee& tracee, const __ptrace_syscall_info& info) {
        tracee.isInCall = false;
        long long result = info.exit.rval;
        if (tracee.isFailing) {
            result = -tracee.error;
            user_regs_struct registers{};
            ::ptrace(PTRACE_GETREGS, pid, nullptr, &registers);
            registers.rax = static_cast<unsigned long long>(result);
            ::ptrace(PTRACE_SETREGS, pid, nullptr, &registers);
            tracee.isFailing = false;
        }
        if (plan_.trace != nullptr)
            record(pid, tracee, result);
        if (tracee.diesAfter)
            ::kill(pid, SIGKILL);
    }

    void record(pid_t pid, const Tracee& tracee, long long result) const {
        const auto& entry = tracee.entry.entry;
        std::fprintf(plan_.trace, "%u %u %llu %lld", tracee.ordinal, tracee.calls - 1,
                     static_cast<unsigned long long>(entry.nr), result);
        for (const auto argument : entry.args)
            std::fprintf(plan_.trace, " %llx", static_cast<unsigned long long>(argument));
        for (const int position : pathArguments(entry.nr))
            std::fprintf(plan_.trace, " %s", escaped(textAt(pid, entry.args[position])).c_str());
        std::fputc('\n', plan_.trace);
    }

    /// Which arguments of a call are paths.
    static std::vector<int> pathArguments(unsigned long long number) {
        switch (number) {
        case SYS_open:
        case SYS_mkdir:
        case SYS_unlink:
        case SYS_stat:
        case SYS_lstat:
        case SYS_readlink:
        case SYS_rmdir:
            return {0};
        case SYS_openat:
        case SYS_mkdirat:
        case SYS_unlinkat:
        case SYS_newfstatat:
        case SYS_statx:
            return {1};
        case SYS_renameat:
        case SYS_renameat2:
        case SYS_linkat:
            return {1, 3};
        default:
            return {};
        }
    }

    static std::string textAt(pid_t pid, unsigned long long address) {
        char bytes[4096] = {};
        iovec local{bytes, sizeof bytes - 1}, remote{reinterpret_cast<void*>(address), sizeof bytes - 1};
        // A read stops at the end of the mapped memory, so the largest part that works is taken.
        while (local.iov_len > 0 && ::process_vm_readv(pid, &local, 1, &remote, 1, 0) < 0)
            local.iov_len = remote.iov_len = local.iov_len / 2;
        return bytes;
    }

    static std::string escaped(const std::string& text) {
        std::string shown;
        for (const char byte : text) {
            char code[8];
            const bool isPlain = byte > ' ' && byte < 0x7f && byte != '%';
            std::snprintf(code, sizeof code, isPlain ? "%c" : "%%%02x", static_cast<unsigned char>(byte));
            shown += code;
        }
        return shown.empty() ? "%" : shown;
    }

    int statusOfProgram() const {
        if (WIFSIGNALED(programStatus_))
            return WTERMSIG(programStatus_) == SIGKILL ? endedByKill : endedBySignal;
        return injected_ < plan_.faults.size() ? nothingInjected : WEXITSTATUS(programStatus_);
    }

    const Plan plan_;
    pid_t program_ = 0;
    int programStatus_ = 0;
    unsigned started_ = 0;
    std::size_t injected_ = 0;
    std::map<pid_t, Tracee> tracees_;
    std::map<unsigned long long, int> lasting_; ///< calls that fail from now on, and how
};

Fault faultFrom(unsigned long long call, const std::string& text) {
    if (text == "short")
        return {Fault::Kind::shortened, call};
    if (text == "kill")
        return {Fault::Kind::killBefore, call};
    if (text == "act")
        return {Fault::Kind::action, call};
    if (text == "killed")
        return {Fault::Kind::killAfter, call};
    if (text.starts_with("errno="))
        return {Fault::Kind::error, call, std::atoi(text.c_str() + 6), text.ends_with('+')};
    std::fprintf(stderr, "unknown fault %s\n", text.c_str());
    std::exit(cannotRun);
}

Plan planFrom(int count, char** values) {
    Plan plan;
    int i = 1;
    for (; i + 1 < count && std::strcmp(values[i], "--") != 0; i += 2) {
        char fault[64] = {};
        Place place{};
        unsigned long long number = 0;
        if (std::strcmp(values[i], "--trace") == 0)
            plan.trace = std::fopen(values[i + 1], "we");
        else if (std::sscanf(values[i + 1], "%u:%u:%llu:%63s", &place.process, &place.call, &number, fault)
                 == 4)
            plan.faults[place] = faultFrom(number, fault);
    }
    plan.command = values + i + 1;
    if (i + 1 >= count || values[i + 1] == nullptr) {
        std::fputs("no program given\n", stderr);
        std::exit(cannotRun);
    }
    return plan;
}

} // namespace

int main(int count, char** values) {
    Plan plan = planFrom(count, values);
    std::FILE* const trace = plan.trace;
    const int status = Injector(std::move(plan)).run();
    if (trace != nullptr)
        std::fclose(trace);
    return status;
}
