#include "platform/imageio/jpeg/LibraryReader.h"

#include <algorithm>
#include <span>

namespace kestrine::jpeg {

namespace {

/// Pictures can have many scans; a file with more than this only takes processor time.
constexpr int maximumScans = 500;

void limitScans(j_common_ptr info) {
    auto* decompress = reinterpret_cast<j_decompress_ptr>(info);
    if (decompress->input_scan_number > maximumScans)
        ERREXIT(info, JERR_EOI_EXPECTED);
}

} // namespace

LibraryReader::LibraryReader(std::shared_ptr<const ByteReader> reader) : reader_(std::move(reader)) {
    info.err = errors.prepare();
    created_ = succeedsInLibrary(errors, [this] { jpeg_create_decompress(&info); });
    if (!created_)
        return;
    progress_.progress_monitor = limitScans;
    info.progress = &progress_;
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
