#include "platform/host/process/ForkedWorker.h"

#include "platform/host/process/Sanitizers.h"
#include "platform/host/process/StandardStreams.h"
#include "platform/host/process/StopSignals.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kestrine {

namespace {

constexpr int socketNumber = STDERR_FILENO + 1;

/// Systems before Linux 5.9, and some filters of system calls, lack close_range().
void closeOneByOne(int first) {
    constexpr rlim_t usualMaximum = 1 << 20; // the kernel's limit for any process
    rlimit limit{usualMaximum, usualMaximum};
    (void)::getrlimit(RLIMIT_NOFILE, &limit);
    const int end = static_cast<int>(std::min(limit.rlim_cur, usualMaximum));
    for (int descriptor = first; descriptor < end; ++descriptor)
        ::close(descriptor);
}

void keepOnly(int socket) {
    if (socket != socketNumber)
        ::dup2(socket, socketNumber);
    if (::close_range(socketNumber + 1, ~0U, 0) != 0)
        closeOneByOne(socketNumber + 1);
}

/// The standard streams become /dev/null, so that accidental output is discarded.
void dropStandardStreams() {
    ::close(STDIN_FILENO);
    ::close(STDOUT_FILENO);
    if (!builtWithSanitizers) // its reports must be visible
        ::close(STDERR_FILENO);
    prepareStandardStreams();
}

void resetSignals() {
    constexpr std::array ofTerminals = {SIGINT, SIGQUIT, SIGTERM, SIGHUP};
    for (int signal = 1; signal < NSIG; ++signal)
        (void)::signal(signal,
                       std::ranges::find(ofTerminals, signal) == ofTerminals.end() ? SIG_DFL : SIG_IGN);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

/// An exception that leaves it ends the process.
[[noreturn]] void runWorker(const WorkerProgram& program, std::uint32_t modules, int socket,
                            pid_t parent) noexcept {
    endWithParent(parent);
    MessageSocket requests(FileDescriptor(becomeSubordinate(socket)));
    if (program.prepare)
        program.prepare(modules);
    const std::uint8_t layers = byteOf(enterSandbox(program.limits));
    if (requests.send({&layers, 1}))
        program.serve(requests);
    ::_exit(0); // does not flush the parent's output a second time
}

} // namespace

void endWithParent(pid_t parent) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) // it ended before
        ::_exit(1);
}

int becomeSubordinate(int socket) {
    keepOnly(socket);
    resetSignals();
    dropStandardStreams();
    return socketNumber;
}

Result<ForkedWorker> forkWorker(const WorkerProgram& program, std::uint32_t modules) {
    auto [ours, theirs] = TRY(MessageSocket::pair());
    if (program.prepareCopies)
        program.prepareCopies();
    const pid_t parent = ::getpid();
    const pid_t process = ::fork();
    if (process == 0)
        runWorker(program, modules, theirs.number(), parent);
    if (process < 0)
        return systemFailure("cannot start a process");
    return ForkedWorker{std::move(ours), process};
}

void endChild(pid_t process) {
    // Only a child that has not ended is signalled: the number of another process is never used.
    // Numbers that mean several processes (0, -1) are never signalled.
    if (process <= 0 || ::waitpid(process, nullptr, WNOHANG) != 0)
        return;
    ::kill(process, SIGKILL);
    while (::waitpid(process, nullptr, 0) < 0 && errno == EINTR) {
    }
}

std::uint8_t byteOf(const SandboxLayers& layers) {
    return static_cast<std::uint8_t>((layers.limits ? 1 : 0) | (layers.landlock ? 2 : 0)
                                     | (layers.systemCalls ? 4 : 0));
}

SandboxLayers layersOf(std::uint8_t byte) {
    if (byte > 7)
        return {};
    return {(byte & 1) != 0, (byte & 2) != 0, (byte & 4) != 0};
}

} // namespace kestrine
