#include "platform/host/process/ChildProcess.h"

#include "platform/host/files/FileDescriptor.h"
#include "platform/host/process/ArgumentVector.h"

#include <cerrno>
#include <csignal>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kestrine {

namespace {

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

} // namespace

Result<ChildProcess> ChildProcess::start(const std::string& program,
                                         const std::vector<std::string>& arguments) {
    const ArgumentVector vector = TRY(ArgumentVector::make(program, arguments));
    pid_t process = -1;
    const int error =
        ::posix_spawnp(&process, program.c_str(), nullptr, DefaultSignals().get(), vector.get(), environ);
    if (error != 0)
        return systemFailure("cannot start " + program, error);
    return ChildProcess(process);
}

Result<ChildEnd> ChildProcess::wait() {
    int status = 0;
    while (::waitpid(process_, &status, 0) < 0)
        if (errno != EINTR)
            return systemFailure("cannot wait for a program");
    if (WIFSIGNALED(status))
        return ChildEnd{WTERMSIG(status), true};
    return ChildEnd{WEXITSTATUS(status), false};
}

} // namespace kestrine
