#include "platform/imageio/pcx/StoredRows.h"

#include <algorithm>

namespace kestrine::pcx {

Result<void> StoredRows::read(std::span<std::uint8_t> row) {
    const Failure endedEarly = {Reason::truncated, "the PCX file ends before its last row"};
    if (!isRunLength_)
        return input_.read(row) == row.size() ? Result<void>() : endedEarly;
    constexpr int runMark = 0xC0;
    while (!row.empty()) {
        if (left_ == 0) {
            const int code = input_.next(), value = code < runMark ? code : input_.next();
            if (value < 0)
                return endedEarly;
            left_ = code < runMark ? 1u : static_cast<unsigned>(code & ~runMark);
            value_ = static_cast<std::uint8_t>(value);
        }
        const std::size_t count = std::min<std::size_t>(left_, row.size());
        std::ranges::fill(row.first(count), value_);
        left_ -= static_cast<unsigned>(count);
        row = row.subspan(count);
    }
    return {};
}

} // namespace kestrine::pcx
