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

Failure refusal(const char* reason) { return {Reason::refused, std::string("own JPEG decoder: ") + reason}; }

/// Fails unless the frame is grey or YCbCr, has 8 bits per sample, and is Huffman coded.
Result<void> checkFrame(const jpeg_decompress_struct& info) {
    if (info.arith_code)
        return refusal("arithmetic coding");
    if (info.data_precision != BITS_IN_JSAMPLE)
        return refusal("samples of other than 8 bits");
    if (info.jpeg_color_space != JCS_GRAYSCALE && info.jpeg_color_space != JCS_YCbCr)
        return refusal("colours other than grey and YCbCr");
    return {};
}

void copyTables(const jpeg_decompress_struct& info, FrameHeader& header) {
    for (std::size_t i = 0; i < FrameHeader::tables; ++i) {
        header.quantisation[i] = tableFrom(info.quant_tbl_ptrs[i]);
        header.dcCodes[i] = codeFrom(info.dc_huff_tbl_ptrs[i]);
        header.acCodes[i] = codeFrom(info.ac_huff_tbl_ptrs[i]);
    }
}

/// None when the sampling factors are unusual or the table does not exist.
std::optional<Component> componentFrom(const jpeg_component_info& stored, const FrameHeader& header) {
    const int quantisation = stored.quant_tbl_no;
    if (!isSamplingFactor(stored.h_samp_factor) || !isSamplingFactor(stored.v_samp_factor)
        || !isTableNumber(quantisation) || !header.quantisation[static_cast<std::size_t>(quantisation)])
        return std::nullopt;
    return Component{.identifier = static_cast<std::uint8_t>(stored.component_id),
                     .horizontal = static_cast<std::uint8_t>(stored.h_samp_factor),
                     .vertical = static_cast<std::uint8_t>(stored.v_samp_factor),
                     .quantisation = static_cast<std::uint8_t>(quantisation)};
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

/// Returns whether the scan has its components in the order of the frame, and usual numbers of tables.
bool copyScan(const jpeg_decompress_struct& info, ScanHeader& scan) {
    scan.componentCount = static_cast<std::size_t>(info.comps_in_scan);
    if (scan.componentCount > scan.components.size())
        return false;
    for (std::size_t i = 0; i < scan.componentCount; ++i) {
        const jpeg_component_info& component = *info.cur_comp_info[i];
        if (!isTableNumber(component.dc_tbl_no) || !isTableNumber(component.ac_tbl_no))
            return false;
        scan.components[i] = static_cast<std::uint8_t>(component.component_index);
        scan.dcCodes[i] = static_cast<std::uint8_t>(component.dc_tbl_no);
        scan.acCodes[i] = static_cast<std::uint8_t>(component.ac_tbl_no);
        if (i > 0 && scan.components[i] <= scan.components[i - 1])
            return false;
    }
    scan.first = info.Ss;
    scan.last = info.Se;
    scan.high = info.Ah;
    scan.low = info.Al;
    return true;
}

/// Whether the scan has all components and all coefficients, and the file has its codes.
bool hasEverything(const FrameHeader& header) {
    const ScanHeader& scan = header.scan;
    for (std::size_t i = 0; i < scan.componentCount; ++i)
        if (!header.dcCodes[scan.dcCodes[i]] || !header.acCodes[scan.acCodes[i]])
            return false;
    return scan.componentCount == header.componentCount && scan.first == 0 && scan.last == DCTSIZE2 - 1
           && scan.high == 0 && scan.low == 0;
}

std::uint32_t quotientRoundedUp(std::uint64_t dividend, int divisor) {
    const auto by = static_cast<std::uint64_t>(divisor);
    return static_cast<std::uint32_t>((dividend + by - 1) / by);
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

std::uint32_t FrameHeader::mcusAcross() const { return quotientRoundedUp(width, horizontalFactor() * 8); }

std::uint32_t FrameHeader::mcusDown() const { return quotientRoundedUp(height, verticalFactor() * 8); }

std::uint32_t FrameHeader::blocksAcross(const Component& component) const {
    return quotientRoundedUp(std::uint64_t{width} * component.horizontal, horizontalFactor() * 8);
}

std::uint32_t FrameHeader::blocksDown(const Component& component) const {
    return quotientRoundedUp(std::uint64_t{height} * component.vertical, verticalFactor() * 8);
}

Result<FrameHeader> frameHeaderOf(const LibraryReader& file) {
    const jpeg_decompress_struct& info = file.info;
    TRY(checkFrame(info));
    if (file.errors.damage[0] != '\0')
        return refusal("the header is damaged");
    FrameHeader header;
    header.width = info.image_width;
    header.height = info.image_height;
    header.restartInterval = info.restart_interval;
    header.isProgressive = info.progressive_mode != 0;
    header.scanOffset = file.position();
    copyTables(info, header);
    if (!copyComponents(info, header))
        return refusal("the sampling factors or quantisers are unusual");
    if (!copyScan(info, header.scan) || (!header.isProgressive && !hasEverything(header)))
        return refusal("the first scan is unusual");
    return header;
}

} // namespace kestrine::jpeg
