// SlotsAhead: work that a second thread does ahead of the first, handed over in slots that go round.
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

/// Why the work ended early: what it failed with, or what was thrown.
struct Interruption {
    std::optional<Failure> failure;
    std::exception_ptr thrown;

    explicit operator bool() const { return failure || thrown; }
    /// Does `work` (a lambda that returns Result<void>) and keeps what ends it early.
    template <class Work>
    void during(const Work& work) {
        try {
            if (Result<void> done = work(); !done)
                failure = done.failure();
        } catch (...) {
            thrown = std::current_exception();
        }
    }
    /// To be passed on by the thread that the work was done for; throws what was thrown.
    Failure passOn() const {
        if (thrown)
            std::rethrow_exception(thrown);
        return *failure;
    }
};

/// `count` slots: the second thread fills the next one that is free, the first uses them in order. A slot
/// belongs to one thread at a time. A second thread that has filled them all rests until half of them are
/// free, since waking it for each would cost more than it does with one.
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

    /// For preparing them, before start().
    std::array<Slot, count>& slots() { return slots_; }

    /// Lets a second thread fill slots until `fill`, which must not throw, returns false for the last one.
    /// False when the system has no thread to give.
    bool start(std::function<bool(Slot&)> fill) {
        try {
            thread_ = std::thread([this, fill = std::move(fill)] { fillSlots(fill); });
            return true;
        } catch (const std::system_error&) {
            return false;
        }
    }

    /// Gives the slot back that the last call returned, and waits for the next. Not to be called behind the
    /// last one.
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
    static constexpr std::size_t restUntil = count / 2; ///< so many wait to be used

    /// Waits for a slot that is free; false when none is wanted any more.
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
    std::mutex mutex_; ///< guards what follows
    std::condition_variable changed_;
    std::size_t filled_ = 0; ///< slots so far
    std::size_t used_ = 0;   ///< slots given back so far
    bool isUsing_ = false;   ///< whether the first thread holds one
    bool isWanted_ = true;
    std::thread thread_;
};

} // namespace kestrine
