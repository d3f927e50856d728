#include "platform/imageio/jpeg/own/IdleDecoders.h"

#include <array>
#include <mutex>

namespace kestrine::jpeg {

namespace {

/// The number of cores of most machines; each decoder holds a quarter of a MiB and a band.
constexpr std::size_t maxIdleDecoders = 16;

std::mutex idleMutex;
std::array<std::unique_ptr<ReusableDecoder>, maxIdleDecoders> idleDecoders; // guarded by idleMutex
std::size_t idleCount = 0;                                                  // guarded by idleMutex

} // namespace

void MakeIdle::operator()(ReusableDecoder* decoder) const noexcept {
    std::unique_ptr<ReusableDecoder> owner(decoder);
    owner->planes.finish();
    const std::lock_guard lock(idleMutex);
    if (idleCount < maxIdleDecoders)
        idleDecoders[idleCount++] = std::move(owner);
}

BorrowedDecoder borrowDecoder() {
    {
        const std::lock_guard lock(idleMutex);
        if (idleCount > 0)
            return BorrowedDecoder(idleDecoders[--idleCount].release());
    }
    return BorrowedDecoder(new ReusableDecoder);
}

} // namespace kestrine::jpeg
