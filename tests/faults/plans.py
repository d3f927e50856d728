"""Which faults are injected into which system calls."""
import errno

# Numbers of x86-64.
NUMBERS = dict(read=0, write=1, poll=7, mmap=9, mprotect=10, munmap=11, brk=12, rt_sigaction=13, rt_sigprocmask=14,
               rt_sigreturn=15, pread64=17, pwrite64=18, sched_yield=24, mremap=25, madvise=28, getpid=39, socketpair=53,
               clone=56, exit=60, wait4=61, kill=62, fcntl=72, rmdir=84, unlink=87, gettimeofday=96, sysinfo=99, getuid=102, getgid=104,
               geteuid=107, getegid=108, getppid=110, sigaltstack=131, prctl=157, arch_prctl=158, gettid=186, futex=202,
               sched_getaffinity=204, set_tid_address=218, clock_gettime=228, clock_getres=229, clock_nanosleep=230,
               exit_group=231, unlinkat=263, tgkill=234, set_robust_list=273, prlimit64=302, memfd_create=319, rseq=334, clone3=435)


def numbers(*names):
    return {NUMBERS[name] for name in names}


# Calls that the kernel does not refuse as they are used here, or whose failure ends the C library itself (its malloc
# does not survive a refused brk in every state; allocations fail in another kind of run). The process can still be
# killed there.
NEVER_FAIL = numbers("brk", "mprotect", "munmap", "rt_sigaction", "rt_sigprocmask", "rt_sigreturn", "sched_yield", "madvise",
                     "getpid", "exit", "kill", "gettimeofday", "sysinfo", "getuid", "getgid", "geteuid", "getegid",
                     "getppid", "sigaltstack", "prctl", "arch_prctl", "gettid", "futex", "sched_getaffinity",
                     "set_tid_address", "clock_gettime", "clock_getres", "clock_nanosleep", "exit_group", "tgkill",
                     "set_robust_list", "prlimit64", "rseq")
F_GETFD = 1
WITH_MEMORY = numbers("mmap", "mremap")
ERRORS = ["EIO", "ENOSPC", "EDQUOT", "EINTR", "EACCES", "EMFILE", "ENOMEM"]
LASTING = ["EIO", "ENOSPC", "EACCES", "EMFILE"]
SPECIAL = {NUMBERS["clone"]: ["EAGAIN", "ENOMEM"], NUMBERS["clone3"]: ["EAGAIN", "ENOMEM"], NUMBERS["wait4"]: ["EINTR"],
           NUMBERS["socketpair"]: ["EMFILE", "ENOMEM", "EACCES"],
           NUMBERS["memfd_create"]: ["EMFILE", "ENOMEM", "ENOSYS"]}
REMOVING = numbers("unlink", "unlinkat", "rmdir")
CAN_BE_SHORT = numbers("read", "write", "pread64", "pwrite64")


class Call:
    """A line of a trace."""

    def __init__(self, line):
        words = line.split()
        self.process, self.index, self.number, self.result = (int(word) for word in words[:4])
        self.arguments = [int(word, 16) for word in words[4:10]]
        self.paths = words[10:]


def calls_of(trace):
    return [Call(line) for line in trace.splitlines()]


def faults_at(call):
    """The faults that make sense at a call."""
    faults = ["kill"]
    if call.number in WITH_MEMORY:
        return faults + ["errno=%d" % errno.ENOMEM]
    if call.number in SPECIAL:
        return faults + ["errno=%d" % getattr(errno, name) for name in SPECIAL[call.number]]
    if call.number in NEVER_FAIL or (call.number == NUMBERS["fcntl"] and call.arguments[1] == F_GETFD):
        return faults
    faults += ["errno=%d" % getattr(errno, name) for name in ERRORS]
    faults += ["errno=%d+" % getattr(errno, name) for name in LASTING]
    if call.number in CAN_BE_SHORT and call.arguments[2] > 1:
        faults.append("short")
    return faults


def single_faults(calls):
    """Every fault at every call: the process, the call's index and number, and the fault."""
    return [[call.process, call.index, call.number, fault] for call in calls for fault in faults_at(call)]
