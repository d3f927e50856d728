#include "platform/imageio/psd/Layers.h"

#include "platform/imageio/psd/Fields.h"

#include <algorithm>

namespace kestrine::psd {

namespace {

/// Keys of blocks with a length of 8 bytes in large files.
constexpr std::uint32_t longKeys[] = {
    fourCC("LMsk"), fourCC("Lr16"), fourCC("Lr32"), fourCC("Layr"), fourCC("Mt16"),
    fourCC("Mt32"), fourCC("Mtrn"), fourCC("Alph"), fourCC("FMsk"), fourCC("lnk2"),
    fourCC("FEid"), fourCC("FXid"), fourCC("PxSD"), fourCC("cinf"),
};
/// Blocks with the layers of pictures of 16 and 32 bits.
constexpr std::uint32_t layerKeys[] = {fourCC("Lr16"), fourCC("Lr32"), fourCC("Layr")};
/// Blocks that say only that the merged picture has alpha.
constexpr std::uint32_t mergedAlphaKeys[] = {fourCC("Mt16"), fourCC("Mt32"), fourCC("Mtrn")};

bool isOneOf(std::span<const std::uint32_t> keys, std::uint64_t key) {
    return std::ranges::find(keys, key) != keys.end();
}

/// The signed number of layers; a negative one means that the merged picture has alpha.
void readCount(ForwardReader& input, LayerSummary& summary) {
    const std::optional<std::uint64_t> stored = readNumber(input, 2);
    const int count = static_cast<std::int16_t>(stored.value_or(0));
    summary.count = std::max(summary.count, static_cast<std::uint32_t>(count < 0 ? -count : count));
    summary.hasMergedAlpha = summary.hasMergedAlpha || count < 0;
}

/// Reads the block at the current position and moves to its end. Returns false if there is no block.
bool readBlock(ForwardReader& input, std::uint64_t end, bool isLarge, LayerSummary& summary) {
    const std::optional<std::uint64_t> mark = readNumber(input, 4), key = readNumber(input, 4);
    if (!key || (*mark != fourCC("8BIM") && *mark != fourCC("8B64")))
        return false;
    const std::optional<std::uint64_t> length = readNumber(input, isLarge && isOneOf(longKeys, *key) ? 8 : 4);
    if (!length || *length > end - std::min(end, input.offset()))
        return false;
    const std::uint64_t next = input.offset() + (*length + 3) / 4 * 4;
    if (isOneOf(layerKeys, *key) && *length >= 2)
        readCount(input, summary);
    summary.hasMergedAlpha = summary.hasMergedAlpha || isOneOf(mergedAlphaKeys, *key);
    input.moveTo(next);
    return true;
}

} // namespace

LayerSummary readLayers(ForwardReader& input, std::uint64_t end, bool isLarge) {
    constexpr unsigned maximumBlocks = 4096; // programs write fewer than 30
    const std::size_t lengthBytes = isLarge ? 8 : 4;
    LayerSummary summary;
    const std::optional<std::uint64_t> layerLength = readNumber(input, lengthBytes);
    const std::uint64_t layers = input.offset();
    if (!layerLength || layers > end || *layerLength > end - layers)
        return summary;
    if (*layerLength >= 2)
        readCount(input, summary);
    input.moveTo(layers + *layerLength);
    const std::optional<std::uint64_t> maskLength = readNumber(input, 4);
    if (!maskLength || input.offset() > end || *maskLength > end - input.offset())
        return summary;
    input.moveTo(input.offset() + *maskLength);
    for (unsigned i = 0; i < maximumBlocks && input.offset() < end; ++i)
        if (!readBlock(input, end, isLarge, summary))
            break;
    return summary;
}

} // namespace kestrine::psd
