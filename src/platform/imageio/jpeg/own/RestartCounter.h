// RestartCounter: counts the MCUs up to the next restart marker of a scan.
#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>

namespace kestrine::jpeg {

class RestartCounter {
public:
    /// Counts from the start of a scan with a marker after every `interval` MCUs, or with none if it is 0.
    explicit RestartCounter(std::uint32_t interval = 0) : interval_(interval), left_(interval) {}

    std::uint32_t interval() const { return interval_; }

    /// Whether a marker comes before the next MCU.
    bool isDue() const { return interval_ != 0 && left_ == 0; }

    /// Passes the marker and returns its number, 0 to 7.
    unsigned pass() {
        left_ = interval_;
        return std::exchange(next_, (next_ + 1) % 8);
    }

    /// Counts the next MCUs, at most `wanted`, up to the next marker, and returns how many these are.
    std::uint32_t take(std::uint32_t wanted) {
        if (interval_ == 0)
            return wanted;
        const std::uint32_t taken = std::min(wanted, left_);
        left_ -= taken;
        return taken;
    }

private:
    std::uint32_t interval_, left_;
    unsigned next_ = 0;
};

} // namespace kestrine::jpeg
