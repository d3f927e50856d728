#include "platform/host/process/StandardOutput.h"

#include "platform/host/files/FileContent.h"

#include <algorithm>
#include <unistd.h>

namespace kestrine {

void StandardOutput::write(std::string_view text) {
    while (!text.empty() && !failed_) {
        const ssize_t written = ::write(descriptor_, text.data(), text.size());
        if (written >= 0)
            text.remove_prefix(static_cast<std::size_t>(written));
        else
            failed_ = !waitsToRetryWrite(descriptor_);
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
