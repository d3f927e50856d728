#include "platform/imageio/jpeg/own/ProgressiveDecoder.h"

namespace kestrine::jpeg {

Result<void> ProgressiveDecoder::start(std::shared_ptr<const ByteReader> reader, const FrameHeader& header,
                                       const std::array<bool, 3>& wantsAC) {
    const std::vector<Scan> scans = TRY(scansOf(*reader, header));
    bands_ = header.mcusDown();
    for (std::size_t c = 0; c < header.componentCount; ++c) {
        const Component& component = header.components[c];
        components_[c].prepare(component, header.blocksAcross(component), header.blocksDown(component),
                               header.mcusAcross());
    }
    for (const Scan& scan : scans) {
        const bool storesAC = !scan.isDC() && wantsAC[scan.header.components[0]];
        scans_.push_back(std::make_unique<ProgressiveScan>(scan, header.mcusAcross(), storesAC));
        if (!scans_.back()->start(reader))
            return Failure{Reason::refused, "own JPEG decoder: the Huffman codes are unusual"};
    }
    return {};
}

bool ProgressiveDecoder::decodeBand(std::uint32_t band) {
    for (const auto& scan : scans_)
        if (!scan->decodeBand(band, components_) || (band + 1 == bands_ && !scan->isAtEnd()))
            return false;
    return true;
}

} // namespace kestrine::jpeg
