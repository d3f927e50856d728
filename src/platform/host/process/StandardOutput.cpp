#include "platform/host/process/StandardOutput.h"

#include <cerrno>
#include <poll.h>
#include <unistd.h>

namespace kestrine {

namespace {

/// Whether to try again after a write that failed: interrupted, or a pipe without room that was handed
/// over in the non-blocking state.
bool mayTryAgain(int descriptor) {
    if (errno == EINTR)
        return true;
    if (errno != EAGAIN)
        return false;
    pollfd writable{descriptor, POLLOUT, 0};
    return ::poll(&writable, 1, -1) > 0 || errno == EINTR;
}

} // namespace

void StandardOutput::write(std::string_view text) {
    while (!text.empty() && !failed_) {
        const ssize_t written = ::write(descriptor_, text.data(), text.size());
        if (written >= 0)
            text.remove_prefix(static_cast<std::size_t>(written));
        else
            failed_ = !mayTryAgain(descriptor_);
    }
}

} // namespace kestrine
