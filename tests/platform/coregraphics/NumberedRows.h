// NumberedRows: rows for tests with several threads.
#pragma once

#include "platform/coregraphics/RowSource.h"

#include <algorithm>
#include <new>
#include <string>
#include <thread>

namespace kestrine {

/// Every byte of a row is its number times 7. Ends as the test chooses. Stores the thread that read the last
/// row.
class NumberedRows final : public RowSource {
public:
    enum class End { none, failure, exception };

    NumberedRows(std::uint32_t width, std::uint32_t height, End end, std::uint32_t endRow,
                 std::thread::id& reader)
        : RowSource({width, height, ColorModel::gray, false, SampleDepth::bits8}), end_(end), endRow_(endRow),
          reader_(reader) {}

    Result<void> readRow(std::span<std::uint8_t> row) override {
        reader_ = std::this_thread::get_id();
        if (end_ != End::none && next_ == endRow_) {
            if (end_ == End::exception)
                throw std::bad_alloc();
            return Failure{Reason::malformed, "row " + std::to_string(next_)};
        }
        std::ranges::fill(row, static_cast<std::uint8_t>(next_ * 7));
        ++next_;
        return {};
    }

private:
    const End end_;
    const std::uint32_t endRow_;
    std::thread::id& reader_;
    std::uint32_t next_ = 0;
};

} // namespace kestrine
