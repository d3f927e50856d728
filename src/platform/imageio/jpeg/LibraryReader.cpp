#include "platform/imageio/jpeg/LibraryReader.h"

namespace kestrine::jpeg {

namespace {

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
