// FrameHeader: the content of a JPEG file before its first scan, as far as our own decoder supports it.
// Only what nearly all cameras and web sites write is accepted. libjpeg-turbo decodes all other files.
#pragma once

#include "platform/imageio/jpeg/LibraryReader.h"

#include <array>
#include <optional>
#include <span>

namespace kestrine::jpeg {

/// row * 8 + column of each coefficient, indexed by its position along the zigzag.
inline constexpr std::array<std::uint8_t, 64> naturalOrder = {
    0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,  12, 19, 26, 33, 40, 48,
    41, 34, 27, 20, 13, 6,  7,  14, 21, 28, 35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23,
    30, 37, 44, 51, 58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};

/// 64 quantisers, row by row.
using QuantisationTable = std::array<std::uint16_t, 64>;

/// A Huffman code as a file describes it: how many codes each length has, and the symbols in code order.
struct HuffmanCode {
    std::array<std::uint8_t, 17> counts{}; ///< by length 1 to 16; [0] is not used
    std::array<std::uint8_t, 256> symbols{};

    bool operator==(const HuffmanCode&) const = default;
};

struct Component {
    std::uint8_t identifier = 0;               ///< by which the headers of scans name it
    std::uint8_t horizontal = 1, vertical = 1; ///< sampling factors: 1, 2 or 4; blocks per MCU
    std::uint8_t quantisation = 0;             ///< number of its table, which exists

    int blocks() const { return horizontal * vertical; }
};

/// The header of one scan.
struct ScanHeader {
    std::size_t componentCount = 0;
    std::array<std::uint8_t, 3> components{};         ///< numbers in the frame, ascending
    std::array<std::uint8_t, 3> dcCodes{}, acCodes{}; ///< numbers of their codes
    int first = 0, last = 63;                         ///< of its coefficients, along the zigzag
    int high = 0; ///< the lowest bit that earlier scans sent of these coefficients; 0 if none did
    int low = 0;  ///< the lowest bit that this scan sends

    std::span<const std::uint8_t> usedComponents() const {
        return std::span(components).first(componentCount);
    }
};

/// Either one grey component (with factors 1) or Y, Cb and Cr.
struct FrameHeader {
    static constexpr std::size_t tables = 4;
    static constexpr int maximumBlocks = 10; ///< per MCU, a limit of the format

    std::uint32_t width = 0, height = 0;
    std::size_t componentCount = 0;
    std::array<Component, 3> components;
    std::array<std::optional<QuantisationTable>, tables> quantisation;
    std::array<std::optional<HuffmanCode>, tables> dcCodes, acCodes;
    std::uint32_t restartInterval = 0; ///< in MCUs; 0 when there are no restart markers
    bool isProgressive = false;        ///< otherwise one scan has everything
    ScanHeader scan;                   ///< the first one
    std::uint64_t scanOffset = 0;      ///< where in the file its entropy-coded bytes begin

    std::span<const Component> usedComponents() const { return std::span(components).first(componentCount); }
    int horizontalFactor() const; ///< the largest one of all components
    int verticalFactor() const;
    int blocksPerMCU() const;         ///< of a scan of all components
    std::uint32_t mcusAcross() const; ///< the same
    std::uint32_t mcusDown() const;   ///< the same
    /// The blocks of a component that hold a part of the picture.
    std::uint32_t blocksAcross(const Component& component) const;
    std::uint32_t blocksDown(const Component& component) const;
};

/// The header of `file`, which must have been read. Fails with reason "refused" when our own decoder does not
/// support the file, which may still be valid.
Result<FrameHeader> frameHeaderOf(const LibraryReader& file);

} // namespace kestrine::jpeg
