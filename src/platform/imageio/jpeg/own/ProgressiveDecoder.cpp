#include "platform/imageio/jpeg/own/ProgressiveDecoder.h"

#include <algorithm>

namespace kestrine::jpeg {

Result<void> ProgressiveDecoder::start(std::shared_ptr<const ByteReader> reader, const FrameHeader& header,
                                       const std::array<bool, 3>& wantsAC) {
    const std::vector<Scan> scans = TRY(scansOf(*reader, header));
    for (std::size_t c = 0; c < header.componentCount; ++c)
        dcBands_[c].prepare(header, header.components[c]);
    for (const Scan& scan : scans) {
        const std::size_t component = scan.header.components[0];
        auto& list = scan.isDC() ? dcScans_ : acScans_[component];
        list.push_back(std::make_unique<ProgressiveScan>(scan, header.mcusAcross(), wantsAC[component]));
        if (!list.back()->start(reader))
            return Failure{Reason::refused, "own JPEG decoder: the Huffman codes are unusual"};
    }
    return {};
}

bool ProgressiveDecoder::decodeDC(std::uint32_t band) {
    return std::ranges::all_of(dcScans_, [&](const auto& scan) { return scan->decodeDC(band, dcBands_); });
}

bool ProgressiveDecoder::decodeAC(std::size_t component, std::uint32_t count) {
    return std::ranges::all_of(acScans_[component],
                               [&](const auto& scan) { return scan->decodeAC(strip_, count); });
}

bool ProgressiveDecoder::isAtEnd() {
    const auto endsHere = [](const auto& scan) { return scan->isAtEnd(); };
    return std::ranges::all_of(dcScans_, endsHere) && std::ranges::all_of(acScans_, [&](const auto& scans) {
               return std::ranges::all_of(scans, endsHere);
           });
}

} // namespace kestrine::jpeg
