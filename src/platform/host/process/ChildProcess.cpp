#include "platform/host/process/ChildProcess.h"

#include "platform/host/files/FileDescriptor.h"
#include "platform/host/files/PathParts.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kestrine {

namespace {

/// The child's standard streams. Without an action the child inherits them.
class StreamActions {
public:
    StreamActions() { ::posix_spawn_file_actions_init(&actions_); }
    ~StreamActions() { ::posix_spawn_file_actions_destroy(&actions_); }
    StreamActions(const StreamActions&) = delete;
    StreamActions& operator=(const StreamActions&) = delete;

    void sendOutputTo(int pipe) {
        ::posix_spawn_file_actions_adddup2(&actions_, pipe, STDOUT_FILENO);
        ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        ::posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    }
    const posix_spawn_file_actions_t* get() const { return &actions_; }

private:
    posix_spawn_file_actions_t actions_;
};

/// The default signal handling for a child. The signals that prepareStandardStreams() ignores would otherwise
/// stay ignored in the child.
class DefaultSignals {
public:
    DefaultSignals() {
        sigset_t ignored, none;
        sigemptyset(&ignored);
        sigaddset(&ignored, SIGPIPE);
        sigaddset(&ignored, SIGXFSZ);
        sigemptyset(&none);
        ::posix_spawnattr_init(&attributes_);
        ::posix_spawnattr_setsigdefault(&attributes_, &ignored);
        ::posix_spawnattr_setsigmask(&attributes_, &none);
        ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    }
    ~DefaultSignals() { ::posix_spawnattr_destroy(&attributes_); }
    DefaultSignals(const DefaultSignals&) = delete;
    DefaultSignals& operator=(const DefaultSignals&) = delete;

    const posix_spawnattr_t* get() const { return &attributes_; }

private:
    posix_spawnattr_t attributes_;
};

Result<pid_t> spawn(const std::string& program, const std::vector<std::string>& arguments,
                    const StreamActions& streams) {
    TRY(checkPath(program));
    std::vector<char*> vector{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) {
        if (argument.find('\0') != std::string::npos)
            return Failure{Reason::malformed, "an argument contains a zero byte"};
        vector.push_back(const_cast<char*>(argument.c_str()));
    }
    vector.push_back(nullptr);
    pid_t process = -1;
    const int error = ::posix_spawnp(&process, program.c_str(), streams.get(), DefaultSignals().get(),
                                     vector.data(), environ);
    if (error != 0)
        return systemFailure("cannot start " + program, error);
    return process;
}

Result<ChildEnd> waitFor(pid_t process) {
    int status = 0;
    while (::waitpid(process, &status, 0) < 0)
        if (errno != EINTR)
            return systemFailure("cannot wait for a program");
    if (WIFSIGNALED(status))
        return ChildEnd{WTERMSIG(status), true};
    return ChildEnd{WEXITSTATUS(status), false};
}

/// Reads to the end of the pipe. Fails with tooLarge after more than `limit` bytes.
Result<std::string> readPipe(int pipe, std::size_t limit) {
    std::string output;
    std::array<char, 4096> block;
    while (output.size() <= limit) {
        const ssize_t count = ::read(pipe, block.data(), block.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return systemFailure("cannot read the output of a program");
        if (count == 0)
            break;
        output.append(block.data(), static_cast<std::size_t>(count));
    }
    if (output.size() > limit)
        return Failure{Reason::tooLarge,
                       "the output of a program has more than " + std::to_string(limit) + " bytes"};
    return output;
}

} // namespace

Result<ChildProcess> ChildProcess::start(const std::string& program,
                                         const std::vector<std::string>& arguments) {
    pid_t process = TRY(spawn(program, arguments, StreamActions()));
    return ChildProcess(process);
}

Result<ChildEnd> ChildProcess::wait() { return waitFor(process_); }

Result<CapturedRun> runCapturingOutput(const std::string& program, const std::vector<std::string>& arguments,
                                       std::size_t limit) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return systemFailure("cannot create a pipe");
    const FileDescriptor reading(ends[0]);
    FileDescriptor writing(ends[1]);
    StreamActions streams;
    streams.sendOutputTo(writing.number());
    pid_t process = TRY(spawn(program, arguments, streams));
    (void)writing.close();
    Result<std::string> output = readPipe(reading.number(), limit);
    if (!output)
        ::kill(process, SIGKILL);
    Result<ChildEnd> end = waitFor(process);
    if (!output || !end)
        return output ? end.failure() : output.failure();
    return CapturedRun{*std::move(output), *end};
}

} // namespace kestrine
