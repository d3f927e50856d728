#include "platform/host/process/StandardStreams.h"

#include <csignal>
#include <fcntl.h>
#include <initializer_list>
#include <unistd.h>

namespace kestrine {

namespace {

bool isOpen(int descriptor) { return ::fcntl(descriptor, F_GETFD) >= 0; }

/// The system gives a new descriptor the lowest free number, which is `descriptor` when those below it
/// are open. Where /dev is not there, the root folder holds the number: nothing can be written to it.
void occupy(int descriptor) {
    if (::open("/dev/null", O_RDWR) != descriptor && !isOpen(descriptor))
        (void)::open("/", O_PATH | O_DIRECTORY);
}

} // namespace

void prepareStandardStreams() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (!isOpen(descriptor))
            occupy(descriptor);
    (void)std::signal(SIGPIPE, SIG_IGN);
    (void)std::signal(SIGXFSZ, SIG_IGN);
}

bool isTerminal(int descriptor) { return ::isatty(descriptor) == 1; }

} // namespace kestrine
