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
    if (!progressive_->decodeBand(decodedBands_))
        return Failure{Reason::refused, "own JPEG decoder: a scan is damaged or unusual"};
    for (std::size_t c = 0; c < header_.componentCount; ++c)
        for (std::uint32_t row = 0; row < header_.components[c].vertical; ++row)
            transformRow(c, row);
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

/// Transforms a row of blocks of a progressive file, and clears its coefficients.
void PlaneDecoder::transformRow(std::size_t component, std::uint32_t row) {
    Plane& plane = planes_[component];
    BandCoefficients& coefficients = progressive_->coefficients(component);
    const auto size = static_cast<std::size_t>(plane.geometry_.blockSize);
    std::uint8_t* const origin = plane.samples_.data() + (1 + row * size) * plane.stride_;
    for (std::uint32_t group = 0; group < coefficients.groupsAcross(); ++group) {
        const int last = size == 1 ? 0 : coefficients.lastNonZero(row, group);
        kernels::inverseDCT(static_cast<int>(size), coefficients.group(row, group).coefficients[0],
                            header_.quantisation[header_.components[component].quantisation]->data(), last,
                            origin + group * lanesOfGroup * size, static_cast<std::ptrdiff_t>(size),
                            static_cast<std::ptrdiff_t>(plane.stride_));
        coefficients.clear(row, group, last);
    }
}

} // namespace kestrine::jpeg
