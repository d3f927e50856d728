// Writes baseline or progressive JPEG with libjpeg-turbo: the JFIF segment, then EXIF, then the profile, then
// the picture.

#include "platform/imageio/Codecs.h"
#include "platform/imageio/exif/ExifSegment.h"
#include "platform/imageio/jpeg/Library.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace kestrine::jpeg {

namespace {

/// The limit in percent. Below this quality chroma is stored at half the resolution, otherwise at full
/// resolution.
constexpr int fullColorQuality = 90;
/// The limit in pixels. Optimised Huffman tables need all coefficients in memory; larger pictures get the
/// standard tables.
constexpr std::uint64_t maxOptimisedPixels = 8'000'000;

struct Output {
    /// The first member, so that the library's pointer to it is one to the Output.
    jpeg_destination_mgr manager;
    ByteSink* file;
    Result<void> written; ///< the first failure; nothing is written after it
    std::array<std::uint8_t, 64 * 1024> buffer;
};

Output& outputOf(j_compress_ptr info) { return *reinterpret_cast<Output*>(info->dest); }

void restart(j_compress_ptr info) {
    Output& output = outputOf(info);
    output.manager.next_output_byte = output.buffer.data();
    output.manager.free_in_buffer = output.buffer.size();
}

/// Keeps a failure in `output`, because the library cannot be told. No exception may pass through the
/// library.
void flush(Output& output, std::size_t count) {
    if (!output.written)
        return;
    try {
        output.written = output.file->write(ByteView(output.buffer).first(count));
    } catch (const std::bad_alloc&) {
        output.written = Failure{Reason::outOfMemory, "not enough memory"};
    }
}

boolean flushWhole(j_compress_ptr info) {
    Output& output = outputOf(info);
    flush(output, output.buffer.size());
    restart(info);
    return TRUE;
}

void flushRest(j_compress_ptr info) {
    Output& output = outputOf(info);
    flush(output, output.buffer.size() - output.manager.free_in_buffer);
}

/// `dotsPerInch` is 1 to 100000.
std::uint16_t wholeDensity(double dotsPerInch) {
    return static_cast<std::uint16_t>(std::min(std::lround(dotsPerInch), 65535L));
}

class Compressor {
public:
    Compressor(const RowFormat& format, const EncodingOptions& options, ByteSink& file)
        : format_(format), options_(options) {
        output_.file = &file;
        info_.err = errors_.prepare();
        created_ = succeedsInLibrary(errors_, [this] { jpeg_create_compress(&info_); });
    }
    ~Compressor() {
        if (created_)
            jpeg_destroy_compress(&info_);
    }
    Compressor(const Compressor&) = delete;
    Compressor& operator=(const Compressor&) = delete;

    Result<void> begin() {
        return run(created_ && succeedsInLibrary(errors_, [this] {
                       configure();
                       jpeg_start_compress(&info_, TRUE);
                       writeMetadata();
                   }));
    }

    Result<void> writeRow(std::uint8_t* row) {
        return run(succeedsInLibrary(errors_, [this, &row] { jpeg_write_scanlines(&info_, &row, 1); }));
    }

    Result<void> finish() {
        return run(succeedsInLibrary(errors_, [this] { jpeg_finish_compress(&info_); }));
    }

private:
    Result<void> run(bool succeeded) const { return succeeded ? output_.written : errors_.failure(); }

    void configure() {
        output_.manager.init_destination = restart;
        output_.manager.empty_output_buffer = flushWhole;
        output_.manager.term_destination = flushRest;
        info_.dest = &output_.manager;
        info_.image_width = format_.width;
        info_.image_height = format_.height;
        info_.input_components = static_cast<int>(format_.channels());
        info_.in_color_space = format_.model == ColorModel::gray ? JCS_GRAYSCALE : JCS_RGB;
        jpeg_set_defaults(&info_);
        const int percent = static_cast<int>(std::lround(options_.percent()));
        jpeg_set_quality(&info_, percent, TRUE);
        if (percent >= fullColorQuality)
            info_.comp_info[0].h_samp_factor = info_.comp_info[0].v_samp_factor = 1;
        info_.optimize_coding = format_.pixels() <= maxOptimisedPixels ? TRUE : FALSE;
        if (options_.isProgressive)
            jpeg_simple_progression(&info_);
        info_.density_unit = 1; // dots per inch
        const Resolution resolution =
            plausibleResolution(options_.resolution.horizontal, options_.resolution.vertical);
        info_.X_density = wholeDensity(resolution.horizontal);
        info_.Y_density = wholeDensity(resolution.vertical);
    }

    void writeMetadata() {
        if (!options_.exif.empty()) {
            const auto length = static_cast<unsigned>(exifSegmentMark.size() + options_.exif.size());
            jpeg_write_m_header(&info_, JPEG_APP0 + 1, length);
            for (const char byte : exifSegmentMark)
                jpeg_write_m_byte(&info_, byte);
            for (const std::uint8_t byte : options_.exif)
                jpeg_write_m_byte(&info_, byte);
        }
        if (options_.profile != nullptr) {
            const ByteView icc = options_.profile->bytes();
            jpeg_write_icc_profile(&info_, icc.data(), static_cast<unsigned>(icc.size()));
        }
    }

    const RowFormat format_;
    const EncodingOptions& options_;
    jpeg_compress_struct info_{};
    Errors errors_{};
    Output output_{};
    bool created_ = false;
};

} // namespace

Result<void> encode(RowSource& rows, const EncodingOptions& options, ByteSink& file) {
    Compressor compressor(rows.format(), options, file);
    TRY(compressor.begin());
    Bytes row(rows.format().bytesPerRow());
    for (std::uint32_t y = 0; y < rows.format().height; ++y) {
        TRY(rows.readRow(row));
        TRY(compressor.writeRow(row.data()));
    }
    return compressor.finish();
}

} // namespace kestrine::jpeg
