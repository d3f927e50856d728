// ScanList: the scans of a progressive JPEG and where in the file they begin, found by reading all its
// markers before any pixel is decoded.
#pragma once

#include "platform/host/Result.h"
#include "platform/host/files/ByteReader.h"
#include "platform/imageio/jpeg/own/FrameHeader.h"

#include <vector>

namespace kestrine::jpeg {

/// A scan with the tables and settings that hold for it.
struct Scan {
    ScanHeader header;
    /// The DC codes of its components, or in the first element the AC code of its only component; refinements
    /// of DC coefficients need no code.
    std::array<HuffmanCode, 3> codes;
    std::uint32_t restartInterval = 0; ///< in MCUs of this scan; 0 when it has no restart markers
    std::uint64_t offset = 0;          ///< where in the file its entropy-coded bytes begin

    bool isDC() const { return header.first == 0; }
    bool isRefinement() const { return header.high != 0; }
};

/// The scans in the order of the file, which sends every bit of every coefficient once. Fails with reason
/// "refused" when that is not so, when the library would warn of the order of the scans, or when anything
/// else between the scans or their number is unusual. Bits within the scans are not looked at.
Result<std::vector<Scan>> scansOf(const ByteReader& file, const FrameHeader& header);

} // namespace kestrine::jpeg
