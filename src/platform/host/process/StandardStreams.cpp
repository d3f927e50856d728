#include "platform/host/process/StandardStreams.h"

#include <csignal>
#include <fcntl.h>
#include <initializer_list>
#include <unistd.h>

namespace kestrine {

namespace {

bool isOpen(int descriptor) { return ::fcntl(descriptor, F_GETFD) >= 0; }

/// A new descriptor gets the lowest free number, which is `descriptor` if all lower ones are open. It is open
/// for the other direction, so that using it fails. If there is no /dev/null, the root folder takes the
/// number; nothing can be read from it or written to it.
void occupy(int descriptor) {
    const int otherDirection = descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY;
    if (::open("/dev/null", otherDirection) != descriptor && !isOpen(descriptor))
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

} // namespace kestrine
