#include "platform/imageio/jpeg/own/PlaneDecoder.h"

#include "platform/imageio/jpeg/kernels/InverseDCT.h"

#include <algorithm>

namespace kestrine::jpeg {

static_assert(lanesOfGroup == kernels::dctLanes);

void Plane::prepare(const PlaneGeometry& geometry, const Component& component, std::uint32_t mcusAcross) {
    geometry_ = geometry;
    rowsPerBand_ = static_cast<std::uint32_t>(component.vertical * geometry.blockSize);
    const std::size_t lanes = (std::size_t{mcusAcross} + lanesOfGroup - 1) / lanesOfGroup * lanesOfGroup;
    stride_ = lanes * static_cast<std::size_t>(component.horizontal * geometry.blockSize) + padding;
    samples_.resize(stride_ * (rowsPerBand_ + 1));
}

Result<void> PlaneDecoder::start(std::shared_ptr<const ByteReader> reader, const FrameHeader& header,
                                 int eighths) {
    header_ = header;
    eighths_ = eighths;
    mcusAcross_ = header_.mcusAcross();
    bands_ = header_.mcusDown();
    decodedBands_ = 0;
    std::array<bool, 3> wantsAC{};
    for (std::size_t c = 0; c < header_.componentCount; ++c) {
        planes_[c].prepare(planeGeometry(header_, c, eighths), header_.components[c], mcusAcross_);
        wantsAC[c] = planes_[c].geometry().blockSize > 1;
    }
    if (header_.isProgressive) {
        progressive_ = std::make_unique<ProgressiveDecoder>();
        return progressive_->start(std::move(reader), header_, wantsAC);
    }
    if (!entropy_.start(std::move(reader), header_, wantsAC))
        return Failure{Reason::refused, "own JPEG decoder: the Huffman codes are unusual"};
    return {};
}

std::uint32_t PlaneDecoder::rowsPerBand() const {
    return static_cast<std::uint32_t>(header_.verticalFactor() * eighths_);
}

void PlaneDecoder::finish() {
    entropy_.finish();
    progressive_.reset();
}

Result<void> PlaneDecoder::decodeBand() {
    keepLastRows();
    TRY(header_.isProgressive ? decodeProgressive() : decodeSequential());
    ++decodedBands_;
    return {};
}

Result<void> PlaneDecoder::decodeSequential() {
    for (std::uint32_t first = 0; first < mcusAcross_; first += lanesOfGroup) {
        const int lanes = static_cast<int>(std::min<std::uint32_t>(lanesOfGroup, mcusAcross_ - first));
        if (!entropy_.decodeGroup(lanes))
            return entropy_.foundMeaninglessBits()
                       ? Failure{Reason::malformed, "JPEG: the scan holds bits without a meaning"}
                       : Failure{Reason::refused, "own JPEG decoder: the scan is cut off or unusual"};
        transformGroup(first);
    }
    return {};
}

Result<void> PlaneDecoder::decodeProgressive() {
    const auto decodesComponent = [this](std::size_t c) {
        for (std::uint32_t row = 0; row < header_.components[c].vertical; ++row)
            if (!decodeRow(c, row))
                return false;
        return true;
    };
    bool isSound = progressive_->decodeDC(decodedBands_);
    for (std::size_t c = 0; c < header_.componentCount && isSound; ++c)
        isSound = decodesComponent(c);
    if (!isSound || (decodedBands_ + 1 == bands_ && !progressive_->isAtEnd()))
        return Failure{Reason::refused, "own JPEG decoder: a scan is damaged or unusual"};
    return {};
}

void PlaneDecoder::keepLastRows() {
    for (std::size_t c = 0; c < header_.componentCount; ++c) {
        Plane& plane = planes_[c];
        std::copy_n(plane.row(plane.rowsPerBand_ - 1), plane.stride_, plane.samples_.data());
    }
}

void PlaneDecoder::transformGroup(std::uint32_t firstMCU) {
    std::size_t block = 0;
    for (std::size_t c = 0; c < header_.componentCount; ++c) {
        Plane& plane = planes_[c];
        const Component& component = header_.components[c];
        const auto size = static_cast<std::size_t>(plane.geometry_.blockSize);
        const std::size_t laneStride = component.horizontal * size;
        std::uint8_t* const origin = plane.samples_.data() + plane.stride_ + firstMCU * laneStride;
        for (std::size_t y = 0; y < component.vertical; ++y) {
            for (std::size_t x = 0; x < component.horizontal; ++x, ++block)
                kernels::inverseDCT(static_cast<int>(size), entropy_.group(block).coefficients[0],
                                    header_.quantisation[component.quantisation]->data(),
                                    entropy_.lastNonZero(c), origin + y * size * plane.stride_ + x * size,
                                    static_cast<std::ptrdiff_t>(laneStride),
                                    static_cast<std::ptrdiff_t>(plane.stride_));
        }
    }
}

/// Decodes and transforms a row of blocks of a progressive file, strip by strip. Returns false when a scan is
/// damaged or unusual.
bool PlaneDecoder::decodeRow(std::size_t component, std::uint32_t row) {
    const DCBand& dc = progressive_->dcBand(component);
    const bool hasAC = row < dc.rowsInBand(decodedBands_);
    for (std::uint32_t group = 0; group < dc.groupsAcross(); group += BlockStrip::groups) {
        const std::uint32_t first = group * static_cast<std::uint32_t>(lanesOfGroup);
        const std::uint32_t left = dc.blocksAcross() - std::min(first, dc.blocksAcross());
        if (hasAC && !progressive_->decodeAC(component, std::min(left, BlockStrip::blocks)))
            return false;
        transformStrip(component, row, group);
    }
    return true;
}

/// Transforms the strip that begins with this group of a row, and clears it.
void PlaneDecoder::transformStrip(std::size_t component, std::uint32_t row, std::uint32_t firstGroup) {
    Plane& plane = planes_[component];
    DCBand& dc = progressive_->dcBand(component);
    BlockStrip& strip = progressive_->strip();
    const auto size = static_cast<std::size_t>(plane.geometry_.blockSize);
    std::uint8_t* const samples = plane.samples_.data() + (1 + row * size) * plane.stride_;
    const std::uint32_t count = std::min(BlockStrip::groups, dc.groupsAcross() - firstGroup);
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::size_t firstBlock = (firstGroup + i) * lanesOfGroup;
        std::int16_t* const group = strip.group(i).coefficients[0];
        std::copy_n(dc.row(row) + firstBlock, lanesOfGroup, group);
        const int last = size == 1 ? 0 : strip.lastNonZero(i);
        kernels::inverseDCT(static_cast<int>(size), group,
                            header_.quantisation[header_.components[component].quantisation]->data(), last,
                            samples + firstBlock * size, static_cast<std::ptrdiff_t>(size),
                            static_cast<std::ptrdiff_t>(plane.stride_));
        strip.clear(i, last);
    }
}

} // namespace kestrine::jpeg
