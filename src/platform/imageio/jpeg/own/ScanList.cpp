#include "platform/imageio/jpeg/own/ScanList.h"

#include "platform/imageio/jpeg/own/MarkerReader.h"

#include <algorithm>

namespace kestrine::jpeg {

namespace {

/// Encoders write 6 to 20 scans. Each takes the memory of its window and tables.
constexpr std::size_t maxScansOfOwn = 64;

constexpr int huffmanCodes = 0xC4, endOfImage = 0xD9, startOfScan = 0xDA, restartIntervals = 0xDD,
              comment = 0xFE;

/// Records which bits of the coefficients have been sent, by the same rules as the library.
class SentBits {
public:
    explicit SentBits(const FrameHeader& frame) : frame_(frame) {
        for (auto& component : lowest_)
            component.fill(notSent);
    }

    /// Notes a scan. Returns false when it does not follow from those before it.
    bool add(const ScanHeader& scan) {
        constexpr int largestShift = 13;
        const bool isDC = scan.first == 0;
        if (isDC ? scan.last != 0 : scan.last < scan.first || scan.last > 63 || scan.componentCount != 1)
            return false;
        if (scan.low > largestShift || (scan.high != 0 && scan.low != scan.high - 1) || !fitsMCU(scan))
            return false;
        return std::ranges::all_of(scan.usedComponents(), [&](std::uint8_t component) {
            auto& lowest = lowest_[component];
            return (isDC || lowest[0] != notSent) && sends(lowest, scan);
        });
    }

    bool isComplete() const {
        return std::ranges::all_of(std::span(lowest_).first(frame_.componentCount), [](const auto& lowest) {
            return std::ranges::all_of(lowest, [](int bit) { return bit == 0; });
        });
    }

private:
    static constexpr int notSent = -1;
    using Lowest = std::array<int, 64>; ///< the lowest bit sent of each coefficient, along the zigzag

    bool fitsMCU(const ScanHeader& scan) const {
        int blocks = 0;
        for (const std::uint8_t component : scan.usedComponents())
            blocks += frame_.components[component].blocks();
        return scan.componentCount == 1 || blocks <= FrameHeader::maximumBlocks;
    }

    static bool sends(Lowest& lowest, const ScanHeader& scan) {
        const auto band = std::span(lowest).subspan(static_cast<std::size_t>(scan.first),
                                                    static_cast<std::size_t>(scan.last) + 1
                                                        - static_cast<std::size_t>(scan.first));
        const int expected = scan.high == 0 ? notSent : scan.high;
        if (std::ranges::any_of(band, [expected](int bit) { return bit != expected; }))
            return false;
        std::ranges::fill(band, scan.low);
        return true;
    }

    const FrameHeader& frame_;
    std::array<Lowest, 3> lowest_;
};

/// Collects the scans.
class ScanCollector {
public:
    ScanCollector(const ByteReader& file, const FrameHeader& frame)
        : frame_(frame), markers_(file, frame.scanOffset), sent_(frame), dcCodes_(frame.dcCodes),
          acCodes_(frame.acCodes), restartInterval_(frame.restartInterval),
          maxVisits_(maxBlockVisits(file.size())) {}

    Result<std::vector<Scan>> collect() {
        if (!addScan(frame_.scan))
            return refusal("a scan, or the number of scans, is unusual");
        for (int code = markers_.passScan(); code != endOfImage;) {
            if (code == MarkerReader::none)
                return refusal("the file ends, or bytes follow, where a marker should be");
            if (code == startOfScan) {
                const std::optional<ScanHeader> scan = readScanHeader();
                if (!scan || !addScan(*scan))
                    return refusal("a scan, or the number of scans, is unusual");
                code = markers_.passScan();
            } else {
                if (!readTables(code))
                    return refusal("something between the scans is unusual");
                code = markers_.nextMarker();
            }
        }
        if (!sent_.isComplete())
            return refusal("the scans do not have all bits");
        return std::move(scans_);
    }

private:
    static Failure refusal(const char* reason) {
        return {Reason::refused, std::string("own JPEG decoder: ") + reason};
    }

    bool addScan(const ScanHeader& header) {
        if (scans_.size() == maxScansOfOwn || !sent_.add(header) || !mayVisit(header))
            return false;
        Scan scan{.header = header, .restartInterval = restartInterval_, .offset = markers_.position()};
        const bool isDC = scan.isDC();
        for (std::size_t i = 0; i < header.componentCount && !(isDC && scan.isRefinement()); ++i) {
            const auto& code = isDC ? dcCodes_[header.dcCodes[i]] : acCodes_[header.acCodes[i]];
            if (!code)
                return false;
            scan.codes[i] = *code;
        }
        scans_.push_back(scan);
        return true;
    }

    /// The library's limit, see LibraryReader.
    bool mayVisit(const ScanHeader& scan) {
        if (!scans_.empty())
            for (const std::uint8_t number : scan.usedComponents()) {
                const Component& component = frame_.components[number];
                visits_ += std::uint64_t{frame_.blocksAcross(component)} * frame_.blocksDown(component);
            }
        return visits_ <= maxVisits_;
    }

    bool readTables(int code) {
        const std::optional<Bytes> content = markers_.segment();
        if (!content)
            return false;
        switch (code) {
        case huffmanCodes:
            return readCodes(*content);
        case restartIntervals:
            if (content->size() != 2)
                return false;
            restartInterval_ = static_cast<std::uint32_t>((*content)[0] << 8 | (*content)[1]);
            return true;
        default:
            return code == comment;
        }
    }

    bool readCodes(ByteView content) {
        constexpr std::size_t lengths = 16;
        while (!content.empty()) {
            if (content.size() < 1 + lengths)
                return false;
            const std::size_t number = content[0] & 15U, kind = content[0] >> 4;
            HuffmanCode code;
            std::ranges::copy(content.subspan(1, lengths), code.counts.begin() + 1);
            content = content.subspan(1 + lengths);
            std::size_t symbols = 0;
            for (const std::uint8_t count : code.counts)
                symbols += count;
            if (kind > 1 || number >= FrameHeader::tables || symbols > code.symbols.size()
                || symbols > content.size())
                return false;
            std::ranges::copy(content.first(symbols), code.symbols.begin());
            content = content.subspan(symbols);
            (kind == 0 ? dcCodes_ : acCodes_)[number] = code;
        }
        return true;
    }

    /// None when the header is unusual.
    std::optional<ScanHeader> readScanHeader() {
        const std::optional<Bytes> content = markers_.segment();
        if (!content || content->empty())
            return std::nullopt;
        ScanHeader scan{.componentCount = content->front()};
        if (scan.componentCount < 1 || scan.componentCount > frame_.componentCount
            || content->size() != 4 + 2 * scan.componentCount)
            return std::nullopt;
        ByteView rest = ByteView(*content).subspan(1);
        for (std::size_t i = 0; i < scan.componentCount; ++i, rest = rest.subspan(2)) {
            const std::optional<std::uint8_t> number = componentNamed(rest[0]);
            scan.dcCodes[i] = rest[1] >> 4;
            scan.acCodes[i] = rest[1] & 15;
            if (!number || (i > 0 && *number <= scan.components[i - 1])
                || scan.dcCodes[i] >= FrameHeader::tables || scan.acCodes[i] >= FrameHeader::tables)
                return std::nullopt;
            scan.components[i] = *number;
        }
        scan.first = rest[0];
        scan.last = rest[1];
        scan.high = rest[2] >> 4;
        scan.low = rest[2] & 15;
        return scan;
    }

    /// None when no component, or several, have this identifier.
    std::optional<std::uint8_t> componentNamed(std::uint8_t identifier) const {
        std::optional<std::uint8_t> found;
        for (std::size_t i = 0; i < frame_.componentCount; ++i) {
            if (frame_.components[i].identifier != identifier)
                continue;
            if (found)
                return std::nullopt;
            found = static_cast<std::uint8_t>(i);
        }
        return found;
    }

    const FrameHeader& frame_;
    MarkerReader markers_;
    SentBits sent_;
    std::array<std::optional<HuffmanCode>, FrameHeader::tables> dcCodes_, acCodes_; ///< valid now
    std::uint32_t restartInterval_;                                                 ///< valid now
    const std::uint64_t maxVisits_;
    std::uint64_t visits_ = 0; ///< of blocks, in all scans after the first
    std::vector<Scan> scans_;
};

} // namespace

Result<std::vector<Scan>> scansOf(const ByteReader& file, const FrameHeader& header) {
    return ScanCollector(file, header).collect();
}

} // namespace kestrine::jpeg
