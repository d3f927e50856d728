// EntropyDecoder: decodes the scan of a JPEG into the coefficients of up to sixteen MCUs at a time.
#pragma once

#include "platform/imageio/jpeg/own/BlockDecoder.h"
#include "platform/imageio/jpeg/own/RestartCounter.h"
#include "platform/imageio/jpeg/own/ScanBytes.h"

#include <utility>
#include <vector>

namespace kestrine::jpeg {

/// The tables of a file's Huffman codes, by number. A code that equals that of the previous file is reused.
template <class Table>
class CodeTables {
public:
    /// Null when the code cannot be used.
    const Table* assign(std::size_t number, const HuffmanCode& code) {
        if (codes_[number] != code)
            codes_[number] = tables_[number].assign(code) ? std::optional(code) : std::nullopt;
        return codes_[number] ? &tables_[number] : nullptr;
    }

private:
    std::array<std::optional<HuffmanCode>, FrameHeader::tables> codes_;
    std::array<Table, FrameHeader::tables> tables_;
};

/// Can be started any number of times, for different files, and keeps its memory between them.
class EntropyDecoder {
public:
    /// Goes to the start of a file's scan. `wantsAC` states for each component whether its AC coefficients
    /// will be used. Returns false when a Huffman code cannot be used.
    bool start(std::shared_ptr<const ByteReader> reader, const FrameHeader& header,
               const std::array<bool, 3>& wantsAC);

    /// Releases the file.
    void finish() { bytes_.finish(); }

    /// Decodes the next `lanes` (1 to 16) MCUs. Returns false when the stream is damaged or unusual; the
    /// decoder cannot continue then.
    bool decodeGroup(int lanes);

    /// Goes past the restart marker that must follow the last MCU, in a file that has them. Returns false
    /// like decodeGroup().
    bool passRestart();

    /// Goes past `count` MCUs without decoding them. They are whole segments, and a restart marker follows
    /// each of them. Must be called at the start of a segment. Returns false like decodeGroup().
    bool skipMCUs(std::uint64_t count);

    /// Whether decodeGroup() failed because of invalid bits; otherwise the stream is unusual or
    /// ends too early.
    bool foundMeaninglessBits() const { return foundMeaninglessBits_; }

    /// The coefficients of block number `block` of each MCU, by lane. Lanes that were not decoded are
    /// undefined up to lastNonZero() of the component, and 0 after it.
    const LaneGroup& group(std::size_t block) const { return groups_[block]; }

    /// The position along the zigzag after which all coefficients of the component are 0.
    int lastNonZero(std::size_t component) const { return lastNonZero_[component]; }

private:
    struct Block {
        const DCTable* dcTable;
        const ACTable* acTable;
        std::int16_t* coefficients; ///< of lane 0
        std::size_t component;
        bool wantsAC;
    };

    void clearGroups();
    bool planBlocks(const FrameHeader& header, const std::array<bool, 3>& wantsAC);
    void beginSegment();
    bool decodeRun(int firstLane, int lanes);
    template <std::size_t... numbers>
    bool decodeMCUs(std::index_sequence<numbers...> blockNumbers, int firstLane, int lanes);

    ScanBytes bytes_;
    Reservoir reservoir_{nullptr};
    CodeTables<DCTable> dcTables_;
    CodeTables<ACTable> acTables_;
    std::vector<LaneGroup> groups_; ///< by number of the block in the MCU
    std::vector<Block> blocks_;     ///< of an MCU
    std::array<int, 3> predictors_{};
    std::array<int, 3> lastNonZero_{};
    RestartCounter restarts_;
    bool foundMeaninglessBits_ = false;
};

} // namespace kestrine::jpeg
