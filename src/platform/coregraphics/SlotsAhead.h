// SlotsAhead: hands over the work of a second thread to the first one in a ring of slots.
#pragma once

#include "platform/host/Result.h"

#include <array>
#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>

namespace kestrine {

/// Why work ended early: a failure or an exception.
struct Interruption {
    std::optional<Failure> failure;
    std::exception_ptr thrown;

    explicit operator bool() const { return failure || thrown; }
    /// Runs `work` (a lambda that returns Result<void>) and stores what ends it early.
    template <class Work>
    void during(const Work& work) {
        try {
            if (Result<void> done = work(); !done)
                failure = done.failure();
        } catch (...) {
            thrown = std::current_exception();
        }
    }
    /// To be called on the thread that needs the result: returns the failure or rethrows the exception.
    Failure passOn() const {
        if (thrown)
            std::rethrow_exception(thrown);
        return *failure;
    }
};

/// `count` slots. The second thread fills free slots, and the first thread uses them in order. A slot belongs
/// to one thread at a time. When the second thread has filled all slots, it waits until half of them are
/// free, because waking it for each slot would take longer than filling one.
template <class Slot, std::size_t count>
class SlotsAhead {
public:
    SlotsAhead() = default;
    ~SlotsAhead() {
        {
            const std::lock_guard lock(mutex_);
            isWanted_ = false;
        }
        changed_.notify_all();
        if (thread_.joinable())
            thread_.join();
    }
    SlotsAhead(const SlotsAhead&) = delete;
    SlotsAhead& operator=(const SlotsAhead&) = delete;

    /// For preparing the slots before start().
    std::array<Slot, count>& slots() { return slots_; }

    /// Starts a second thread that fills slots until `fill` returns false for the last one. `fill` must not
    /// throw. Returns false if the system cannot start a thread.
    bool start(std::function<bool(Slot&)> fill) {
        try {
            thread_ = std::thread([this, fill = std::move(fill)] { fillSlots(fill); });
            return true;
        } catch (const std::system_error&) {
            return false;
        }
    }

    /// Releases the slot of the previous call, waits for the next one and returns it. Must not be called
    /// after the last slot.
    Slot& next() {
        std::unique_lock lock(mutex_);
        if (isUsing_) {
            ++used_;
            if (filled_ - used_ == restUntil)
                changed_.notify_all();
        }
        changed_.wait(lock, [this] { return filled_ > used_; });
        isUsing_ = true;
        return slots_[used_ % count];
    }

private:
    static constexpr std::size_t restUntil = count / 2; ///< filled slots at which the second thread continues

    /// Waits for a free slot; returns false when no more are needed.
    bool waitForFree() {
        std::unique_lock lock(mutex_);
        if (filled_ - used_ == count)
            changed_.wait(lock, [this] { return filled_ - used_ <= restUntil || !isWanted_; });
        return isWanted_;
    }

    void fillSlots(const std::function<bool(Slot&)>& fill) {
        for (bool isLast = false; !isLast;) {
            if (!waitForFree())
                return;
            isLast = !fill(slots_[filled_ % count]);
            {
                const std::lock_guard lock(mutex_);
                ++filled_;
            }
            changed_.notify_all();
        }
    }

    std::array<Slot, count> slots_;
    std::mutex mutex_; ///< guards the four members after changed_
    std::condition_variable changed_;
    std::size_t filled_ = 0; ///< slots so far, never reset
    std::size_t used_ = 0;   ///< slots released so far
    bool isUsing_ = false;   ///< whether the first thread holds a slot
    bool isWanted_ = true;
    std::thread thread_;
};

} // namespace kestrine
