#include "platform/host/process/CapturedRun.h"

#include "platform/host/files/FileDescriptor.h"
#include "platform/host/process/ArgumentVector.h"
#include "platform/host/process/ProgramPath.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

// The program is a child of a supervisor, which is a fork of ours. The supervisor waits for the program with
// its own signal handling and reports its end through a pipe, so the handling of SIGCHLD in this process has
// no effect. The system signals the supervisor when the thread that forked it ends; that thread
// waits here, so it ends only with the process. The program is signalled when the supervisor ends.

namespace kestrine {

namespace {

/// The report of the supervisor.
struct Report {
    int startError; ///< the error number when the program could not be started, else 0
    int waitStatus; ///< as waitpid() returns it
};

struct Pipe {
    FileDescriptor reading, writing;
};

/// The ends have numbers above those of the standard streams, so that replacing these does not close an end.
Result<FileDescriptor> awayFromStandardStreams(FileDescriptor descriptor) {
    if (descriptor.number() > STDERR_FILENO)
        return descriptor;
    const int number = ::fcntl(descriptor.number(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (number < 0)
        return systemFailure("cannot make a pipe");
    return FileDescriptor(number);
}

Result<Pipe> makePipe() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return systemFailure("cannot make a pipe");
    FileDescriptor reading(ends[0]), writing(ends[1]);
    return Pipe{TRY(awayFromStandardStreams(std::move(reading))),
                TRY(awayFromStandardStreams(std::move(writing)))};
}

ArgumentVector environmentWith(const EnvironmentChanges& changes) {
    std::vector<std::string> variables;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        const std::string variable = *entry;
        if (!changes.contains(variable.substr(0, variable.find('='))))
            variables.push_back(variable);
    }
    for (const auto& [name, value] : changes)
        variables.push_back(name + "=" + value);
    return ArgumentVector(std::move(variables));
}

/// Everything that the children need, prepared before the fork, since between fork and exec only functions
/// that are safe in signal handlers may be called.
struct Plan {
    ArgumentVector files; ///< the candidates for the program
    ArgumentVector arguments;
    ArgumentVector environment;
    int output; ///< the program's standard output
    int report; ///< the pipe for the supervisor's report
};

/// Closes every descriptor from 3 on, except two.
void closeOthers(int one, int other) {
    const auto low = static_cast<unsigned>(std::min(one, other)),
               high = static_cast<unsigned>(std::max(one, other));
    if (low > 3)
        ::close_range(3, low - 1, 0);
    if (high > low + 1)
        ::close_range(low + 1, high - 1, 0);
    ::close_range(high + 1, ~0U, 0);
}

/// Gives the signals used here the handling that a new program expects.
void restoreSignals() {
    for (const int signal : {SIGCHLD, SIGPIPE, SIGTERM, SIGXFSZ})
        ::signal(signal, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

/// Ends this process as well when `parent` ends or has ended already.
void endWith(pid_t parent) {
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() != parent)
        ::_exit(1);
}

void send(int pipe, const Report& report) {
    while (::write(pipe, &report, sizeof report) < 0 && errno == EINTR) {
    }
}

/// Replaces this process by the program; returns the error number if that is not possible.
int execute(const Plan& plan) {
    ::dup2(plan.output, STDOUT_FILENO);
    for (const int stream : {STDIN_FILENO, STDERR_FILENO}) {
        ::close(stream);
        if (::open("/dev/null", O_RDWR) != stream) // the lowest free number
            return errno;
    }
    int error = ENOENT;
    for (char* const* file = plan.files.get(); *file != nullptr; ++file) {
        ::execve(*file, plan.arguments.get(), plan.environment.get());
        if (errno != ENOENT && errno != ENOTDIR)
            error = errno;
        if (error != ENOENT && error != EACCES)
            break;
    }
    return error;
}

[[noreturn]] void supervise(const Plan& plan, pid_t process) {
    restoreSignals();
    endWith(process);
    closeOthers(plan.output, plan.report);
    const pid_t supervisor = ::getpid();
    const pid_t program = ::_Fork();
    if (program == 0) {
        endWith(supervisor);
        send(plan.report, {execute(plan), 0});
        ::_exit(1);
    }
    const int forkError = errno;
    ::close(plan.output);
    Report report{program < 0 ? forkError : 0, 0};
    while (program > 0 && ::waitpid(program, &report.waitStatus, 0) < 0 && errno == EINTR) {
    }
    send(plan.report, report);
    ::_exit(0);
}

/// Everything up to the end of the pipe; gives up once there is more than `limit`.
Result<std::string> readPipe(int pipe, std::size_t limit) {
    std::string output;
    std::array<char, 4096> block;
    while (output.size() <= limit) {
        const ssize_t count = ::read(pipe, block.data(), block.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return systemFailure("cannot read what a program writes");
        if (count == 0)
            break;
        output.append(block.data(), static_cast<std::size_t>(count));
    }
    if (output.size() > limit)
        return Failure{Reason::tooLarge, "the program wrote more than " + std::to_string(limit) + " bytes"};
    return output;
}

/// Uses the first report: a program that cannot be started sends its own report before the supervisor's.
Result<ChildEnd> endReported(int pipe, const std::string& program) {
    Report report{};
    ssize_t count = 0;
    do
        count = ::read(pipe, &report, sizeof report);
    while (count < 0 && errno == EINTR);
    if (count != sizeof report)
        return Failure{Reason::inputOutput, "cannot find out how " + program + " ended"};
    if (report.startError != 0)
        return systemFailure("cannot start " + program, report.startError);
    if (WIFSIGNALED(report.waitStatus))
        return ChildEnd{WTERMSIG(report.waitStatus), true};
    return ChildEnd{WEXITSTATUS(report.waitStatus), false};
}

/// A supervisor that has reported is gone, and its number may belong to another process.
void endUnlessReported(pid_t supervisor, int pipe) {
    pollfd report{pipe, POLLIN, 0};
    if (::poll(&report, 1, 0) == 0)
        ::kill(supervisor, SIGTERM);
}

} // namespace

Result<CapturedRun> runCapturingOutput(const std::string& program, const std::vector<std::string>& arguments,
                                       std::size_t limit, const EnvironmentChanges& changes) {
    ArgumentVector vector = TRY(ArgumentVector::make(program, arguments));
    Pipe output = TRY(makePipe()), report = TRY(makePipe());
    const Plan plan{ArgumentVector(possiblePathsOf(program)), std::move(vector), environmentWith(changes),
                    output.writing.number(), report.writing.number()};
    const pid_t process = ::getpid();
    const pid_t supervisor = ::fork();
    if (supervisor == 0)
        supervise(plan, process);
    if (supervisor < 0)
        return systemFailure("cannot start " + program);
    (void)output.writing.close();
    (void)report.writing.close();
    Result<std::string> text = readPipe(output.reading.number(), limit);
    if (!text)
        endUnlessReported(supervisor, report.reading.number());
    (void)output.reading.close();
    const Result<ChildEnd> end = endReported(report.reading.number(), program);
    while (::waitpid(supervisor, nullptr, 0) < 0 && errno == EINTR) {
    }
    if (!text)
        return text.failure();
    return CapturedRun{*std::move(text), TRY(end)};
}

} // namespace kestrine
