#include "platform/imageio/tiff/OwnBlocks.h"

#include "platform/imageio/tiff/kernels/PixelDifferences.h"

#include <algorithm>

namespace kestrine::tiff {

namespace {

/// Larger blocks are left to libtiff.
constexpr std::size_t maxOwnBlockBytes = std::size_t{16} << 20;

/// Regular LZW data are at most half as long again as the bytes they stand for, with 12 bits for each byte;
/// deflate data are hardly longer.
constexpr std::size_t maxCompressedBytes(std::size_t decodedBytes) { return 2 * decodedBytes + 4096; }

template <std::size_t size>
void swapBytes(std::span<std::uint8_t> samples) {
    for (std::size_t at = 0; at + size <= samples.size(); at += size)
        std::reverse(samples.data() + at, samples.data() + at + size);
}

std::uint16_t compressionOf(const File& file) {
    return file.shortNumber(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
}

bool isDeflate(std::uint16_t compression) {
    return compression == COMPRESSION_ADOBE_DEFLATE || compression == COMPRESSION_DEFLATE;
}

} // namespace

std::unique_ptr<OwnBlocks> OwnBlocks::create(const File& file, const Page& page) {
    const std::uint16_t compression = compressionOf(file);
    if ((compression != COMPRESSION_LZW && !isDeflate(compression))
        || file.shortNumber(TIFFTAG_FILLORDER, FILLORDER_MSB2LSB) != FILLORDER_MSB2LSB)
        return nullptr;
    const std::uint16_t predictor = file.shortNumber(TIFFTAG_PREDICTOR, PREDICTOR_NONE);
    const bool canBeDifferences = page.bits == 8 || page.bits == 16;
    if (predictor != PREDICTOR_NONE && !(predictor == PREDICTOR_HORIZONTAL && canBeDifferences))
        return nullptr;
    return std::unique_ptr<OwnBlocks>(new OwnBlocks(file, page));
}

OwnBlocks::OwnBlocks(const File& file, const Page& page)
    : file_(file), samplesPerPixel_(page.isPlanar ? 1 : page.samples),
      bytesPerSample_(page.bits % 8 == 0 ? page.bits / 8 : 0),
      areDifferences_(file.shortNumber(TIFFTAG_PREDICTOR, PREDICTOR_NONE) == PREDICTOR_HORIZONTAL),
      isSwapped_(file.library().isByteSwapped(file.handle()) != 0) {
    if (isDeflate(compressionOf(file)))
        decompressor_.emplace<Inflater>();
}

bool OwnBlocks::decode(std::uint32_t index, std::size_t rowBytes, std::span<std::uint8_t> block) {
    if (block.size() > maxOwnBlockBytes || !readCompressed(index, block.size())
        || !std::visit([&](auto& one) { return one.decode(compressed_, block); }, decompressor_))
        return false;
    if (isSwapped_)
        swapSamples(block);
    if (areDifferences_)
        for (std::size_t at = 0; at < block.size(); at += rowBytes)
            kernels::undoPixelDifferences(block.data() + at, rowBytes, bytesPerSample_, samplesPerPixel_);
    return true;
}

bool OwnBlocks::readCompressed(std::uint32_t index, std::size_t decodedBytes) {
    const Functions& library = file_.library();
    const std::uint64_t count = library.blockByteCount(file_.handle(), index);
    if (count == 0 || count > maxCompressedBytes(decodedBytes))
        return false;
    compressed_.resize(count);
    return file_.readAt(library.blockOffset(file_.handle(), index), compressed_);
}

/// libtiff swaps samples of these sizes and no others.
void OwnBlocks::swapSamples(std::span<std::uint8_t> block) const {
    if (bytesPerSample_ == 2)
        swapBytes<2>(block);
    else if (bytesPerSample_ == 4)
        swapBytes<4>(block);
    else if (bytesPerSample_ == 8)
        swapBytes<8>(block);
}

} // namespace kestrine::tiff
