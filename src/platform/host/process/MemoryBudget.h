// MemoryBudget: lets jobs that must hold large data share the memory of the machine.
//
// Jobs wait for each other here, so a job must not wait while it holds a part of the same budget: it reserves
// all that it needs from a budget in one step. Then every reservation belongs to a job that goes on, and each
// waiting job has its turn.
#pragma once

#include "platform/host/Result.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <utility>

namespace kestrine {

class MemoryBudget;

/// A part of a budget, given back when this is destroyed. The budget must outlive it. Any thread.
class MemoryReservation {
public:
    MemoryReservation() = default; ///< of nothing
    ~MemoryReservation();
    MemoryReservation(MemoryReservation&& other) noexcept
        : budget_(std::exchange(other.budget_, nullptr)), bytes_(other.bytes_) {}
    MemoryReservation& operator=(MemoryReservation&& other) noexcept {
        std::swap(budget_, other.budget_);
        std::swap(bytes_, other.bytes_);
        return *this;
    }

private:
    friend class MemoryBudget;
    MemoryReservation(MemoryBudget& budget, std::uint64_t bytes) : budget_(&budget), bytes_(bytes) {}

    MemoryBudget* budget_ = nullptr;
    std::uint64_t bytes_ = 0;
};

/// Any thread. Counts what is reserved; it does not allocate memory.
class MemoryBudget {
public:
    /// The limit in bytes that every budget has at least, for which the system is not asked.
    static constexpr std::uint64_t smallestLimit = std::uint64_t{64} << 20;

    /// Grants `percent` of the memory that is available when more than `smallestLimit` is needed for the
    /// first time.
    explicit MemoryBudget(unsigned percent) : percent_(percent) {}

    /// Waits, in the order of the calls, until `bytes` fit in addition to the other reservations. Fails at
    /// once, with reason "tooLarge", if they would not even fit alone.
    Result<MemoryReservation> reserve(std::uint64_t bytes);

    /// Like reserve(), but gives nullopt instead of waiting or failing.
    std::optional<MemoryReservation> tryReserve(std::uint64_t bytes);

    /// Replaces the limit, in bytes. Reservations are not affected. nullopt: derived from the memory that is
    /// available when it is needed next.
    void setLimit(std::optional<std::uint64_t> bytes);

private:
    friend class MemoryReservation;
    void release(std::uint64_t bytes);
    /// The caller of these must hold the mutex.
    bool fitsAlone(std::uint64_t bytes);
    bool fits(std::uint64_t bytes);
    std::uint64_t limitFor(std::uint64_t bytes);

    const unsigned percent_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::optional<std::uint64_t> limit_;                   ///< guarded by mutex_, like the members below
    std::uint64_t reserved_ = 0;                           ///< in bytes
    std::uint64_t lastTicket_ = 0, ticketBeingServed_ = 1; ///< of waiting calls
};

/// For memory that conversions need: pictures that must be held whole. 70 % of the available memory.
MemoryBudget& budgetForHeldPictures();
/// For memory that only saves time: pictures that are kept for further results. 20 % of the available memory.
/// No job waits for it, so that jobs may hold a part of it while they wait for the other budget.
MemoryBudget& budgetForKeptPictures();

} // namespace kestrine
