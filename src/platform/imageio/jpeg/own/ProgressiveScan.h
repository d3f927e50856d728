// ProgressiveScan: decodes one scan of a progressive JPEG piece by piece, so that all scans of a file can be
// decoded side by side.
#pragma once

#include "platform/imageio/jpeg/own/BlockStrip.h"
#include "platform/imageio/jpeg/own/DCBand.h"
#include "platform/imageio/jpeg/own/RestartCounter.h"
#include "platform/imageio/jpeg/own/ScanBytes.h"
#include "platform/imageio/jpeg/own/ScanList.h"

namespace kestrine::jpeg {

class ProgressiveScan {
public:
    /// `mcusAcross` is the number of MCUs in a row if the scan has several components. `storesAC` is false if
    /// no AC coefficient of this scan will be used.
    ProgressiveScan(const Scan& scan, std::uint32_t mcusAcross, bool storesAC);

    /// Goes to the start of the scan. Returns false when a Huffman code cannot be used.
    bool start(std::shared_ptr<const ByteReader> reader);

    const Scan& scan() const { return scan_; }

    /// Decodes band number `band` of a scan of DC coefficients. `components` are those of the frame; the
    /// scans before this one have decoded their part of the band. Returns false when the scan is damaged or
    /// unusual.
    bool decodeDC(std::uint32_t band, std::span<DCBand> components);

    /// Decodes the next `count` blocks of a scan of AC coefficients into the first ones of `strip`. The scans
    /// before this one have decoded their part of them. Returns false when the scan is damaged or unusual.
    bool decodeAC(BlockStrip& strip, std::uint32_t count);

    /// Whether the scan ends here as it should.
    bool isAtEnd() { return bytes_.isAtEnd(reservoir_); }

private:
    bool mayDecode(Reservoir& reservoir);
    bool passRestart();
    template <class Decode>
    bool decodeRuns(std::uint32_t count, const Decode& decode);

    template <class Decode>
    bool decodeInterleaved(std::span<DCBand> components, const Decode& decode);
    template <class Decode>
    bool decodeRows(std::uint32_t band, DCBand& component, const Decode& decode);
    bool takeFirstDC(std::size_t component, std::int16_t& coefficient);
    bool takeBitOfDC(std::int16_t& coefficient);

    template <bool stores>
    bool decodeFirstAC(BlockStrip& strip, std::uint32_t first, std::uint32_t count);
    template <bool stores>
    bool refineAC(BlockStrip& strip, std::uint32_t first, std::uint32_t count);

    const Scan scan_;
    const std::uint32_t mcusAcross_;
    const bool storesAC_;
    std::vector<DCTable> dcTables_;  ///< by number of the component in the scan
    std::vector<BandTable> acTable_; ///< one or none
    ScanBytes bytes_;
    Reservoir reservoir_{nullptr};
    RestartCounter restarts_;
    std::array<int, 3> predictors_{};
    std::uint32_t endedBlocks_ = 0; ///< the next blocks have no more symbols
};

} // namespace kestrine::jpeg
