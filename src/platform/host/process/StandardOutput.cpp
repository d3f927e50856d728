#include "platform/host/process/StandardOutput.h"

#include <algorithm>
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

void CollectedOutput::add(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t count = std::min(bytes.size(), pieces_.size() - size_);
        std::copy_n(bytes.begin(), count, pieces_.begin() + size_);
        bytes.remove_prefix(count);
        size_ += count;
        if (size_ == pieces_.size())
            flush();
    }
}

void CollectedOutput::flush() {
    output_.write({pieces_.data(), size_});
    size_ = 0;
}

} // namespace kestrine
