#include "platform/imageio/jpeg/own/DecodersAtRest.h"

#include <array>
#include <mutex>

namespace kestrine::jpeg {

namespace {

/// As many as most machines have workers; each holds a quarter of a MiB and a band.
constexpr std::size_t mostAtRest = 16;

std::mutex mutex;
std::array<std::unique_ptr<PlaneDecoder>, mostAtRest> resting; // guarded by mutex, the first `count` of them
std::size_t count = 0;                                         // guarded by mutex

} // namespace

void LayToRest::operator()(PlaneDecoder* decoder) const noexcept {
    std::unique_ptr<PlaneDecoder> owner(decoder);
    owner->finish();
    const std::lock_guard lock(mutex);
    if (count < mostAtRest)
        resting[count++] = std::move(owner);
}

BorrowedDecoder borrowDecoder() {
    {
        const std::lock_guard lock(mutex);
        if (count > 0)
            return BorrowedDecoder(resting[--count].release());
    }
    return BorrowedDecoder(new PlaneDecoder);
}

} // namespace kestrine::jpeg
