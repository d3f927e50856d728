#include "platform/imageio/jpeg/LibraryReader.h"

#include <algorithm>
#include <span>

namespace kestrine::jpeg {

namespace {

/// Pictures can have many scans; a file with more than this only takes processor time.
constexpr int maximumScans = 500;

/// A scan that changes nothing needs one bit for 2000 blocks, but takes up to 70 ns for each block. So the
/// scans after the first may visit this many blocks in total, and 64 more for each byte of the file. Encoders
/// write 6 to 20 scans. Since the first scan of a component has at least one bit per block, the length of a
/// file always allows 8 visits to every block; 2^24 blocks are 30 scans of 36 megapixels.
constexpr std::uint64_t uncheckedVisits = std::uint64_t{1} << 24;
constexpr std::uint64_t maxVisitsPerByte = 64;

/// The number of blocks in the current scan.
std::uint64_t blocksInScan(const jpeg_decompress_struct& info) {
    std::uint64_t blocks = 0;
    for (const jpeg_component_info* component :
         std::span(info.cur_comp_info).first(static_cast<std::size_t>(info.comps_in_scan)))
        blocks += std::uint64_t{component->width_in_blocks} * component->height_in_blocks;
    return blocks;
}

} // namespace

std::uint64_t maxBlockVisits(std::uint64_t fileBytes) {
    return uncheckedVisits + maxVisitsPerByte * fileBytes;
}

/// libjpeg-turbo calls this several times in each scan.
void LibraryReader::limitScans(j_common_ptr info) {
    const auto& decompress = *reinterpret_cast<j_decompress_ptr>(info);
    auto& progress = *reinterpret_cast<Progress*>(info->progress);
    if (decompress.input_scan_number == progress.lastScan)
        return;
    progress.lastScan = decompress.input_scan_number;
    if (progress.lastScan > 1)
        progress.blockVisits += blocksInScan(decompress);
    if (progress.lastScan > maximumScans || progress.blockVisits > progress.maxBlockVisits)
        failInLibrary(info, "the file has too many scans for its length");
}

LibraryReader::LibraryReader(std::shared_ptr<const ByteReader> reader) : reader_(std::move(reader)) {
    info.err = errors.prepare();
    created_ = succeedsInLibrary(errors, [this] { jpeg_create_decompress(&info); });
    if (!created_)
        return;
    progress_.manager.progress_monitor = limitScans;
    progress_.maxBlockVisits = maxBlockVisits(reader_->size());
    info.progress = &progress_.manager;
    input_.attach(info, *reader_);
}

LibraryReader::~LibraryReader() {
    if (created_)
        jpeg_destroy_decompress(&info);
}

/// Whether a picture with several scans, which have all been read, lacks a scan: a component has no scan, or
/// the file ends without an EOI marker before all refinements.
bool LibraryReader::lacksScans() {
    if (!jpeg_has_multiple_scans(&info))
        return false;
    const std::span components(info.comp_info, static_cast<std::size_t>(info.num_components));
    if (info.coef_bits == nullptr)
        return std::ranges::any_of(components,
                                   [](auto& component) { return component.quant_table == nullptr; });
    return std::ranges::any_of(components, [this](const jpeg_component_info& component) {
        const std::span bits(info.coef_bits[component.component_index]);
        constexpr int notSent = -1;
        return bits.front() == notSent || (input_.hasEnded && std::ranges::count(bits, 0) < DCTSIZE2);
    });
}

std::optional<Failure> LibraryReader::damage() {
    const bool hasWarned = errors.damage[0] != '\0';
    if (!hasWarned && !lacksScans())
        return std::nullopt;
    if (input_.hasEnded)
        return Failure{Reason::truncated, "the JPEG file is cut off: a part of the picture is missing"};
    return Failure{Reason::malformed, std::string("the JPEG picture is damaged: ")
                                          + (hasWarned ? errors.damage : "it lacks a scan")};
}

Result<void> LibraryReader::readHeader(std::initializer_list<int> keptSegments) {
    const auto read = [this, &keptSegments] {
        for (const int segment : keptSegments)
            jpeg_save_markers(&info, JPEG_APP0 + segment, 0xFFFF);
        jpeg_read_header(&info, TRUE);
    };
    if (!created_ || !succeedsInLibrary(errors, read))
        return errors.failure();
    return {};
}

} // namespace kestrine::jpeg
