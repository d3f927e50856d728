#include "platform/imageio/jpeg/own/PlaneDecoder.h"

#include "platform/imageio/jpeg/kernels/InverseDCT.h"

#include <algorithm>

namespace kestrine::jpeg {

static_assert(lanesOfGroup == kernels::dctLanes);

namespace {

Failure bandRefusal(const char* why) { return {Reason::refused, std::string("own JPEG decoder: ") + why}; }

} // namespace

Result<void> PlaneDecoder::start(std::shared_ptr<const ByteReader> reader, const FrameHeader& header,
                                 int eighths) {
    header_ = header;
    eighths_ = eighths;
    mcusAcross_ = header_.mcusAcross();
    bands_ = header_.mcusDown();
    decodedBands_ = 0;
    std::array<bool, 3> wantsAC{};
    for (std::size_t c = 0; c < header_.componentCount; ++c)
        wantsAC[c] = planeGeometry(header_, c, eighths).blockSize > 1;
    if (header_.isProgressive) {
        progressive_ = std::make_unique<ProgressiveDecoder>();
        return progressive_->start(std::move(reader), header_, wantsAC);
    }
    if (!entropy_.start(std::move(reader), header_, wantsAC))
        return bandRefusal("the Huffman codes are unusual");
    return {};
}

void PlaneDecoder::prepare(SampleBand& band) const {
    band.componentCount = header_.componentCount;
    for (std::size_t c = 0; c < header_.componentCount; ++c)
        band.storage[c].prepare(planeGeometry(header_, c, eighths_), header_.components[c], mcusAcross_,
                                lanesOfGroup);
}

void PlaneDecoder::finish() {
    entropy_.finish();
    progressive_.reset();
}

Result<void> PlaneDecoder::decodeBand(SampleBand& band) {
    TRY(header_.isProgressive ? decodeProgressive(band) : decodeSequential(band));
    ++decodedBands_;
    return {};
}

Result<void> PlaneDecoder::endAtRestart() {
    if (!entropy_.passRestart())
        return bandRefusal("a restart marker is missing");
    return {};
}

Result<void> PlaneDecoder::skipBands(std::uint32_t count) {
    if (!entropy_.skipMCUs(std::uint64_t{count} * mcusAcross_))
        return bandRefusal("a restart marker is missing");
    return {};
}

Result<void> PlaneDecoder::decodeSequential(SampleBand& band) {
    for (std::uint32_t first = 0; first < mcusAcross_; first += lanesOfGroup) {
        const int lanes = static_cast<int>(std::min<std::uint32_t>(lanesOfGroup, mcusAcross_ - first));
        if (!entropy_.decodeGroup(lanes))
            return entropy_.foundMeaninglessBits()
                       ? Failure{Reason::malformed, "JPEG: the scan holds bits without a meaning"}
                       : bandRefusal("the scan is cut off or unusual");
        transformGroup(band, first);
    }
    return {};
}

Result<void> PlaneDecoder::decodeProgressive(SampleBand& band) {
    const auto decodesComponent = [this, &band](std::size_t c) {
        for (std::uint32_t row = 0; row < header_.components[c].vertical; ++row)
            if (!decodeRow(band.storage[c], c, row))
                return false;
        return true;
    };
    bool isSound = progressive_->decodeDC(decodedBands_);
    for (std::size_t c = 0; c < header_.componentCount && isSound; ++c)
        isSound = decodesComponent(c);
    if (!isSound || (decodedBands_ + 1 == bands_ && !progressive_->isAtEnd()))
        return bandRefusal("a scan is damaged or unusual");
    return {};
}

void PlaneDecoder::transformGroup(SampleBand& band, std::uint32_t firstMCU) {
    std::size_t block = 0;
    for (std::size_t c = 0; c < header_.componentCount; ++c) {
        Plane& plane = band.storage[c];
        const Component& component = header_.components[c];
        const auto size = static_cast<std::size_t>(plane.geometry().blockSize);
        const std::size_t laneStride = component.horizontal * size;
        std::uint8_t* const origin = plane.row(0) + firstMCU * laneStride;
        for (std::size_t y = 0; y < component.vertical; ++y) {
            for (std::size_t x = 0; x < component.horizontal; ++x, ++block)
                kernels::inverseDCT(static_cast<int>(size), entropy_.group(block).coefficients[0],
                                    header_.quantisation[component.quantisation]->data(),
                                    entropy_.lastNonZero(c), origin + y * size * plane.stride() + x * size,
                                    static_cast<std::ptrdiff_t>(laneStride),
                                    static_cast<std::ptrdiff_t>(plane.stride()));
        }
    }
}

/// Decodes and transforms a row of blocks of a progressive file, strip by strip. Returns false when a scan is
/// damaged or unusual.
bool PlaneDecoder::decodeRow(Plane& plane, std::size_t component, std::uint32_t row) {
    const DCBand& dc = progressive_->dcBand(component);
    const bool hasAC = row < dc.rowsInBand(decodedBands_);
    for (std::uint32_t group = 0; group < dc.groupsAcross(); group += BlockStrip::groups) {
        const std::uint32_t first = group * static_cast<std::uint32_t>(lanesOfGroup);
        const std::uint32_t left = dc.blocksAcross() - std::min(first, dc.blocksAcross());
        if (hasAC && !progressive_->decodeAC(component, std::min(left, BlockStrip::blocks)))
            return false;
        transformStrip(plane, component, row, group);
    }
    return true;
}

/// Transforms the strip that begins with this group of a row, and clears it.
void PlaneDecoder::transformStrip(Plane& plane, std::size_t component, std::uint32_t row,
                                  std::uint32_t firstGroup) {
    DCBand& dc = progressive_->dcBand(component);
    BlockStrip& strip = progressive_->strip();
    const auto size = static_cast<std::size_t>(plane.geometry().blockSize);
    std::uint8_t* const samples = plane.row(static_cast<std::ptrdiff_t>(row * size));
    const std::uint32_t count = std::min(BlockStrip::groups, dc.groupsAcross() - firstGroup);
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::size_t firstBlock = (firstGroup + i) * lanesOfGroup;
        std::int16_t* const group = strip.group(i).coefficients[0];
        std::copy_n(dc.row(row) + firstBlock, lanesOfGroup, group);
        const int last = size == 1 ? 0 : strip.lastNonZero(i);
        kernels::inverseDCT(static_cast<int>(size), group,
                            header_.quantisation[header_.components[component].quantisation]->data(), last,
                            samples + firstBlock * size, static_cast<std::ptrdiff_t>(size),
                            static_cast<std::ptrdiff_t>(plane.stride()));
        strip.clear(i, last);
    }
}

} // namespace kestrine::jpeg
