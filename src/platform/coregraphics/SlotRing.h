// SlotRing: hands over the work of one task of a crew to the next one in a ring of slots.
#pragma once

#include "platform/coregraphics/Crew.h"
#include "platform/host/Result.h"

#include <array>
#include <exception>
#include <optional>

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

/// `count` slots, which are filled and used in order. A slot belongs to one thread at a time.
template <class Slot, std::size_t count>
class SlotRing final : private Crew::Task {
public:
    explicit SlotRing(std::shared_ptr<Crew> crew) : crew_(std::move(crew)) {}
    ~SlotRing() override {
        if (fill_)
            crew_->remove(*this);
    }
    SlotRing(const SlotRing&) = delete;
    SlotRing& operator=(const SlotRing&) = delete;

    /// The slots, so that the caller can prepare them before start().
    std::array<Slot, count>& slots() { return slots_; }

    /// From now on, the crew fills slots until `fill` returns false for the last one. `fill` must not throw,
    /// and is called by one thread at a time. For `isSibling` see Crew::add().
    void start(std::function<bool(Slot&)> fill, bool isSibling = false) {
        fill_ = std::move(fill);
        crew_->add(*this, isSibling);
    }

    /// Releases the slot of the previous call, and returns the next one when it is filled. Must not be called
    /// after the last slot.
    Slot& next() {
        Crew::Lock lock = crew_->lock();
        if (isUsing_ && filled_ - ++used_ == restUntil) // waking threads for each slot would take longer
            crew_->notify();
        isUsing_ = true;
        crew_->workUntil(lock, *this, [this] { return filled_ > used_; });
        return slots_[used_ % count];
    }

private:
    static constexpr std::size_t restUntil = count / 2;

    bool isReady() const override { return !isFilling_ && !isOver_ && filled_ - used_ < count; }
    std::size_t begin() override {
        isFilling_ = true;
        return filled_ % count;
    }
    void work(std::size_t slot) override { wasLast_ = !fill_(slots_[slot]); }
    void end(std::size_t /*slot*/) override {
        isFilling_ = false;
        isOver_ = wasLast_;
        ++filled_;
    }

    const std::shared_ptr<Crew> crew_;
    std::array<Slot, count> slots_;
    std::function<bool(Slot&)> fill_;
    // All below are guarded by the crew's lock, but wasLast_ belongs to the thread that fills.
    std::size_t filled_ = 0; ///< slots so far, never reset
    std::size_t used_ = 0;   ///< slots released so far
    bool isUsing_ = false;   ///< whether the next task holds a slot, or waits for one
    bool isFilling_ = false;
    bool isOver_ = false;
    bool wasLast_ = false;
};

} // namespace kestrine
