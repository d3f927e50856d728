#include "platform/imageio/png/thorough/ThoroughPiece.h"

#include "platform/imageio/png/kernels/PNGFilters.h"

#include <algorithm>
#include <bitset>
#include <cmath>
#include <cstring>
#include <vector>

namespace kestrine::png {

namespace {

using kernels::PNGFilter;

constexpr int trialCompression = 5, finalCompression = 12; // of libdeflate, 1 to 12

/// A row in each of the five filtered forms.
class FilteredForms {
public:
    explicit FilteredForms(std::size_t bytes) { forms_.fill(Bytes(bytes)); }

    void make(const StoredRowShape& shape, const std::uint8_t* row, const std::uint8_t* above) {
        for (std::size_t filter = 0; filter < forms_.size(); ++filter)
            kernels::filterPNGRow(static_cast<PNGFilter>(filter), shape.bytesPerPixel, row, above,
                                  forms_[filter].data(), shape.bytes);
    }

    const Bytes& operator[](std::size_t filter) const { return forms_[filter]; }

private:
    std::array<Bytes, kernels::pngFilters> forms_;
};

double sumOfDifferences(ByteView row) {
    std::uint64_t sum = 0;
    for (const std::uint8_t byte : row)
        sum += std::min<unsigned>(byte, 256u - byte);
    return static_cast<double>(sum);
}

/// In bits: what an ideal code for single bytes needs.
double entropy(ByteView row) {
    std::array<std::uint32_t, 256> counts{};
    for (const std::uint8_t byte : row)
        ++counts[byte];
    double bits = 0;
    for (const std::uint32_t count : counts)
        if (count > 0)
            bits += count * std::log2(static_cast<double>(row.size()) / count);
    return bits;
}

double differentPairs(ByteView row) {
    std::bitset<65536> seen;
    for (std::size_t i = 1; i < row.size(); ++i)
        seen.set(std::size_t{row[i - 1]} << 8 | row[i]);
    return static_cast<double>(seen.count());
}

/// Chooses the filter for a row.
struct Strategy {
    int filter = -1;                    ///< the same for every row, or -1
    double (*cost)(ByteView) = nullptr; ///< the form with the lowest cost is chosen
};

constexpr Strategy strategies[] = {
    {0}, {1}, {2}, {3}, {4}, {-1, sumOfDifferences}, {-1, entropy}, {-1, differentPairs}};

std::size_t chosenFilter(const Strategy& strategy, const FilteredForms& forms, std::size_t candidates) {
    if (strategy.filter >= 0)
        return std::min(static_cast<std::size_t>(strategy.filter), candidates - 1);
    std::size_t best = 0;
    double lowest = strategy.cost(forms[0]);
    for (std::size_t filter = 1; filter < candidates; ++filter)
        if (const double cost = strategy.cost(forms[filter]); cost < lowest) {
            lowest = cost;
            best = filter;
        }
    return best;
}

/// The rows filtered by every strategy; each row is preceded by the number of its filter.
std::array<Bytes, std::size(strategies)> filteredInEveryWay(ByteView rows, const StoredRowShape& shape) {
    constexpr std::size_t filtersWithoutAbove = 2;
    std::array<Bytes, std::size(strategies)> candidates;
    const std::size_t count = rows.size() / shape.bytes;
    for (Bytes& candidate : candidates)
        candidate.reserve(count * (shape.bytes + 1));
    FilteredForms forms(shape.bytes);
    Bytes row(shape.bytes + 2 * kernels::pngRowMargin), above(row.size());
    for (std::size_t y = 0; y < count; ++y) {
        std::swap(row, above);
        std::memcpy(row.data() + kernels::pngRowMargin, rows.data() + y * shape.bytes, shape.bytes);
        forms.make(shape, row.data() + kernels::pngRowMargin, above.data() + kernels::pngRowMargin);
        for (std::size_t i = 0; i < candidates.size(); ++i) {
            const std::size_t filter =
                chosenFilter(strategies[i], forms, y == 0 ? filtersWithoutAbove : kernels::pngFilters);
            candidates[i].push_back(static_cast<std::uint8_t>(filter));
            candidates[i].insert(candidates[i].end(), forms[filter].begin(), forms[filter].end());
        }
    }
    return candidates;
}

} // namespace

DeflatedPiece deflateThoroughly(ByteView rows, const StoredRowShape& shape, bool isLast) {
    const auto candidates = filteredInEveryWay(rows, shape);
    const auto sizeOf = [](const Bytes& candidate) {
        return deflatePiece(candidate, true, trialCompression).deflated.size();
    };
    const auto best = std::ranges::min_element(candidates, {}, sizeOf);
    return deflatePiece(*best, isLast, finalCompression);
}

} // namespace kestrine::png
