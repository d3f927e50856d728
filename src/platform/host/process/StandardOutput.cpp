#include "platform/host/process/StandardOutput.h"

#include <cerrno>
#include <poll.h>
#include <unistd.h>

namespace kestrine {

namespace {

/// Whether to repeat a failed write: it was interrupted, or the descriptor is a full non-blocking pipe, which
/// has room again when this returns.
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
