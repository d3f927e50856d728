// EntropyDecoder: the scan of a JPEG, from bytes to the coefficients of sixteen MCUs at a time.
#pragma once

#include "platform/imageio/jpeg/own/BlockDecoder.h"
#include "platform/imageio/jpeg/own/ScanBytes.h"

#include <utility>
#include <vector>

namespace kestrine::jpeg {

/// The tables of a file's codes by number. A code that was the last file's, too, costs nothing.
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

/// May be started again and again, for any files; its memory serves them all.
class EntropyDecoder {
public:
    /// Goes to the start of a file's scan. `wantsAC` says for each component whether more than the DC
    /// coefficients will be used. False when a code cannot be used.
    bool start(std::shared_ptr<const ByteReader> reader, const FrameHeader& header,
               const std::array<bool, 3>& wantsAC);

    /// Lets go of the file.
    void finish() { bytes_.finish(); }

    /// Decodes the next `lanes` (1 to 16) MCUs. False when anything is odd; then the decoder is at its end.
    bool decodeGroup(int lanes);

    /// Coefficients of the block of that number in each of the MCUs, by lane; those of other lanes mean
    /// nothing, though past lastNonZero() of the component theirs are 0, too.
    const LaneGroup& group(std::size_t block) const { return groups_[block]; }

    /// The position along the zigzag behind which all coefficients of a component's blocks are 0.
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
    bool passRestart();
    bool decodeRun(int firstLane, int lanes);
    template <std::size_t... numbers>
    bool decodeMCUs(std::index_sequence<numbers...> blockNumbers, int firstLane, int lanes);

    ScanBytes bytes_;
    Reservoir reservoir_{nullptr};
    CodeTables<DCTable> dcTables_;
    CodeTables<ACTable> acTables_;
    std::vector<LaneGroup> groups_; ///< by block of the MCU
    std::vector<Block> blocks_;     ///< of an MCU
    std::array<int, 3> predictors_{};
    std::array<int, 3> lastNonZero_{};
    std::uint32_t restartInterval_ = 0; ///< in MCUs, 0 for none
    std::uint32_t untilRestart_ = 0;    ///< in MCUs
    unsigned nextRestart_ = 0;
};

} // namespace kestrine::jpeg
