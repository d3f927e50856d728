#include "platform/host/process/MemoryBudget.h"

#include "platform/host/process/AvailableMemory.h"

#include <algorithm>

namespace kestrine {

MemoryReservation::~MemoryReservation() {
    if (budget_ != nullptr)
        budget_->release(bytes_);
}

Result<MemoryReservation> MemoryBudget::reserve(std::uint64_t bytes) {
    if (bytes == 0)
        return MemoryReservation();
    std::unique_lock lock(mutex_);
    const std::uint64_t ticket = ++lastTicket_;
    changed_.wait(lock, [&] { return ticket == ticketBeingServed_ && (!fitsAlone(bytes) || fits(bytes)); });
    ++ticketBeingServed_;
    changed_.notify_all();
    if (!fitsAlone(bytes))
        return Failure{Reason::tooLarge, "the picture needs more memory than is available"};
    reserved_ += bytes;
    return MemoryReservation(*this, bytes);
}

std::optional<MemoryReservation> MemoryBudget::tryReserve(std::uint64_t bytes) {
    const std::lock_guard lock(mutex_);
    if (!fits(bytes))
        return std::nullopt;
    reserved_ += bytes;
    return MemoryReservation(*this, bytes);
}

void MemoryBudget::setLimit(std::optional<std::uint64_t> bytes) {
    const std::lock_guard lock(mutex_);
    limit_ = bytes;
    changed_.notify_all();
}

void MemoryBudget::release(std::uint64_t bytes) {
    const std::lock_guard lock(mutex_);
    reserved_ -= bytes;
    changed_.notify_all();
}

bool MemoryBudget::fitsAlone(std::uint64_t bytes) { return bytes <= limitFor(bytes); }

bool MemoryBudget::fits(std::uint64_t bytes) {
    const std::uint64_t limit = limitFor(reserved_ + bytes);
    return bytes <= limit && reserved_ <= limit - bytes;
}

/// Asks the system only if `bytes` exceed the limit that every budget has at least.
std::uint64_t MemoryBudget::limitFor(std::uint64_t bytes) {
    if (!limit_ && bytes <= smallestLimit)
        return smallestLimit;
    if (!limit_)
        limit_ = std::max(smallestLimit, availableMemory() / 100 * percent_);
    return *limit_;
}

MemoryBudget& budgetForHeldPictures() {
    static MemoryBudget budget(70);
    return budget;
}

MemoryBudget& budgetForKeptPictures() {
    static MemoryBudget budget(20);
    return budget;
}

} // namespace kestrine
