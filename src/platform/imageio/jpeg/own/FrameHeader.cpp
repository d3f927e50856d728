#include "platform/imageio/jpeg/own/FrameHeader.h"

#include <algorithm>

namespace kestrine::jpeg {

namespace {

bool isSamplingFactor(int factor) { return factor == 1 || factor == 2 || factor == 4; }

bool isTableNumber(int number) { return number >= 0 && number < static_cast<int>(FrameHeader::tables); }

/// None when the file does not have the table, or when it has a quantiser of 0.
std::optional<QuantisationTable> tableFrom(const JQUANT_TBL* stored) {
    if (stored == nullptr || std::ranges::count(stored->quantval, 0) != 0)
        return std::nullopt;
    QuantisationTable table;
    std::ranges::copy(stored->quantval, table.begin());
    return table;
}

std::optional<HuffmanCode> codeFrom(const JHUFF_TBL* stored) {
    if (stored == nullptr)
        return std::nullopt;
    HuffmanCode code;
    std::ranges::copy(stored->bits, code.counts.begin());
    std::ranges::copy(stored->huffval, code.symbols.begin());
    return code;
}

/// Whether the frame is grey or YCbCr, has 8 bits per sample, and is Huffman coded without progression.
bool isUsualFrame(const jpeg_decompress_struct& info) {
    return info.data_precision == BITS_IN_JSAMPLE && !info.progressive_mode && !info.arith_code
           && (info.jpeg_color_space == JCS_GRAYSCALE || info.jpeg_color_space == JCS_YCbCr);
}

/// Whether the scan has all components in the order of the frame, and all coefficients.
bool isUsualScan(const jpeg_decompress_struct& info) {
    if (info.comps_in_scan != info.num_components)
        return false;
    for (int i = 0; i < info.num_components; ++i)
        if (info.cur_comp_info[i] != info.comp_info + i)
            return false;
    return info.Ss == 0 && info.Se == DCTSIZE2 - 1 && info.Ah == 0 && info.Al == 0;
}

/// None when the sampling factors are unusual or a table does not exist.
std::optional<Component> componentFrom(const jpeg_component_info& stored, const FrameHeader& header) {
    const int quantisation = stored.quant_tbl_no, dcCode = stored.dc_tbl_no, acCode = stored.ac_tbl_no;
    if (!isSamplingFactor(stored.h_samp_factor) || !isSamplingFactor(stored.v_samp_factor)
        || !isTableNumber(quantisation) || !isTableNumber(dcCode) || !isTableNumber(acCode))
        return std::nullopt;
    const Component component{.horizontal = static_cast<std::uint8_t>(stored.h_samp_factor),
                              .vertical = static_cast<std::uint8_t>(stored.v_samp_factor),
                              .quantisation = static_cast<std::uint8_t>(quantisation),
                              .dcCode = static_cast<std::uint8_t>(dcCode),
                              .acCode = static_cast<std::uint8_t>(acCode)};
    const bool hasTables = header.quantisation[component.quantisation] && header.dcCodes[component.dcCode]
                           && header.acCodes[component.acCode];
    return hasTables ? std::optional(component) : std::nullopt;
}

void copyTables(const jpeg_decompress_struct& info, FrameHeader& header) {
    for (std::size_t i = 0; i < FrameHeader::tables; ++i) {
        header.quantisation[i] = tableFrom(info.quant_tbl_ptrs[i]);
        header.dcCodes[i] = codeFrom(info.dc_huff_tbl_ptrs[i]);
        header.acCodes[i] = codeFrom(info.ac_huff_tbl_ptrs[i]);
    }
}

/// Returns whether all components are supported.
bool copyComponents(const jpeg_decompress_struct& info, FrameHeader& header) {
    header.componentCount = static_cast<std::size_t>(info.num_components);
    for (std::size_t i = 0; i < header.componentCount; ++i) {
        const std::optional<Component> component = componentFrom(info.comp_info[i], header);
        if (!component)
            return false;
        header.components[i] = *component;
    }
    // The scan of a single component is not interleaved: its MCU is one block, with any factors.
    if (header.componentCount == 1)
        header.components[0].horizontal = header.components[0].vertical = 1;
    return header.blocksPerMCU() <= FrameHeader::maximumBlocks;
}

} // namespace

int FrameHeader::horizontalFactor() const {
    int largest = 1;
    for (const Component& component : usedComponents())
        largest = std::max<int>(largest, component.horizontal);
    return largest;
}

int FrameHeader::verticalFactor() const {
    int largest = 1;
    for (const Component& component : usedComponents())
        largest = std::max<int>(largest, component.vertical);
    return largest;
}

int FrameHeader::blocksPerMCU() const {
    int blocks = 0;
    for (const Component& component : usedComponents())
        blocks += component.blocks();
    return blocks;
}

std::optional<FrameHeader> frameHeaderOf(const LibraryReader& file) {
    const jpeg_decompress_struct& info = file.info;
    if (!isUsualFrame(info) || !isUsualScan(info) || file.errors.damage[0] != '\0')
        return std::nullopt;
    FrameHeader header;
    header.width = info.image_width;
    header.height = info.image_height;
    header.restartInterval = info.restart_interval;
    header.scanOffset = file.position();
    copyTables(info, header);
    return copyComponents(info, header) ? std::optional(header) : std::nullopt;
}

} // namespace kestrine::jpeg
