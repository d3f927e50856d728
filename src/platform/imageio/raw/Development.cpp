#include "platform/imageio/raw/Development.h"

#include "platform/coregraphics/RowsAhead.h"
#include "platform/imageio/raw/Stream.h"

#include <algorithm>
#include <cstring>

namespace kestrine::raw {

namespace {

// What LibRaw 0.21 calls by other names than 0.20.
#if LIBRAW_COMPILE_CHECK_VERSION_NOTLESS(0, 21)
constexpr unsigned withoutMessages = LIBRAW_OPTIONS_NO_DATAERR_CALLBACK;
unsigned& maxSensorMegabytes(libraw_data_t& data) { return data.rawparams.max_raw_memory_mb; }
#else
constexpr unsigned withoutMessages = LIBRAW_OPIONS_NO_MEMERR_CALLBACK | LIBRAW_OPIONS_NO_DATAERR_CALLBACK;
unsigned& maxSensorMegabytes(libraw_data_t& data) { return data.params.max_raw_memory_mb; }
#endif

Failure failureOf(int code) {
    switch (code) {
    case LIBRAW_FILE_UNSUPPORTED:
    case LIBRAW_NOT_IMPLEMENTED:
        return {Reason::unsupported, "the camera raw file is of a kind that LibRaw does not support"};
    case LIBRAW_TOO_BIG:
        return {Reason::tooLarge, "the camera raw file has too many pixels"};
    case LIBRAW_UNSUFFICIENT_MEMORY:
    case LIBRAW_MEMPOOL_OVERFLOW:
        return {Reason::outOfMemory, "not enough memory"};
    case LIBRAW_IO_ERROR:
        return {Reason::truncated, "the camera raw file ends too early"};
    default:
        return {Reason::malformed, "the camera raw file is damaged"};
    }
}

/// What LibRaw reports while it decodes: where the data are not what they should be.
struct DataErrors {
    bool endsEarly = false, isDamaged = false;

    static void note(void* errors, const char*, int offset) {
        auto& self = *static_cast<DataErrors*>(errors);
        (offset < 0 ? self.endsEarly : self.isDamaged) = true;
    }
};

/// A file that LibRaw has opened.
class Session {
public:
    static Result<std::unique_ptr<Session>> open(const Functions& library,
                                                 std::shared_ptr<const ByteReader> reader) {
        std::unique_ptr<Session> session(new Session(library, std::move(reader)));
        if (session->data_ == nullptr)
            return failureOf(LIBRAW_UNSUFFICIENT_MEMORY);
        library.setDataErrorHandler(session->data_.get(), DataErrors::note, &session->errors_);
        libraw_output_params_t& parameters = session->data_->params;
        parameters.use_camera_wb = 1;
        parameters.output_color = 1; // sRGB, also its tone curve:
        parameters.gamm[0] = 1 / 2.4;
        parameters.gamm[1] = 12.92;
        parameters.output_bps = 16;
        parameters.user_flip = 0; // turns are made later
        TRY(checked(library.openStream(session->data_->parent_class, &session->stream_)));
        return session;
    }

    libraw_data_t& data() { return *data_; }
    const DataErrors& errors() const { return errors_; }

    /// Fails unless `code` is success.
    static Result<void> checked(int code) {
        if (code != LIBRAW_SUCCESS)
            return failureOf(code);
        return {};
    }

private:
    Session(const Functions& library, std::shared_ptr<const ByteReader> reader)
        : stream_(library, std::move(reader)), data_(library.create(withoutMessages), library.destroy) {}

    Stream stream_;
    DataErrors errors_;
    const std::unique_ptr<libraw_data_t, decltype(&libraw_close)> data_;
};

/// EXIF orientation of a flip: 1 exchanges left and right, 2 exchanges top and bottom, 4 exchanges the axes.
int orientationOf(int flip) {
    constexpr int orientations[] = {1, 2, 4, 3, 5, 8, 6, 7};
    return flip >= 0 && flip < 8 ? orientations[flip] : 1;
}

/// An upper bound of the memory for the sensor data as they are read from the file, in any form.
std::uint64_t bytesOfSensorData(const libraw_data_t& data) {
    const bool hasPattern = data.idata.filters != 0 || data.idata.colors == 1;
    const std::uint64_t samples = hasPattern ? 1 : 4, bytesPerSample = 4; // floating point has four bytes
    return std::uint64_t{data.sizes.raw_width} * data.sizes.raw_height * samples * bytesPerSample;
}

/// Each 2 x 2 pixels of the sensor show all colours, and no pixel is moved while it is developed.
bool isPlainMosaic(const libraw_data_t& data, const RowFormat& developed) {
    constexpr unsigned firstPattern = 1000; // smaller numbers are other arrangements
    return data.idata.filters >= firstPattern && data.idata.colors == 3 && developed.width == data.sizes.width
           && developed.height == data.sizes.height;
}

using DevelopedPointer = std::unique_ptr<libraw_processed_image_t, decltype(&libraw_dcraw_clear_mem)>;

/// What LibRaw makes of the file. Its other memory is free again when this returns.
Result<DevelopedPointer> developed(const Functions& library, std::shared_ptr<const ByteReader> reader,
                                   const Negative& negative, int halvings, DamageRecord& damage) {
    const std::unique_ptr<Session> session = TRY(Session::open(library, std::move(reader)));
    libraw_data_t& data = session->data();
    data.params.half_size = halvings;
    maxSensorMegabytes(data) = static_cast<unsigned>((negative.heldBytes >> 20) + 1);
    if (library.setThreads != nullptr)
        library.setThreads(static_cast<int>(usefulThreads(negative.format)));
    TRY(Session::checked(library.unpack(&data)));
    if (session->errors().endsEarly)
        return failureOf(LIBRAW_IO_ERROR);
    if (session->errors().isDamaged)
        damage.note(failureOf(LIBRAW_DATA_ERROR));
    TRY(Session::checked(library.develop(&data)));
    int code = LIBRAW_SUCCESS;
    DevelopedPointer image(library.makePixels(&data, &code), library.freePixels);
    if (image == nullptr)
        return failureOf(code);
    return image;
}

} // namespace

RowFormat Negative::halved(int halvings) const {
    RowFormat result = format;
    result.width = (format.width + (1U << halvings) - 1) >> halvings;
    result.height = (format.height + (1U << halvings) - 1) >> halvings;
    return result;
}

Result<Negative> readNegative(const Functions& library, std::shared_ptr<const ByteReader> reader) {
    const std::unique_ptr<Session> session = TRY(Session::open(library, std::move(reader)));
    libraw_data_t& data = session->data();
    Negative negative;
    negative.sensor = {data.sizes.width, data.sizes.height};
    negative.orientation = orientationOf(data.sizes.flip);
    TRY(Session::checked(library.adjustSizes(&data)));
    const libraw_image_sizes_t& sizes = data.sizes;
    negative.format = {sizes.iwidth, sizes.iheight,
                       data.idata.colors == 1 ? ColorModel::gray : ColorModel::rgb, false,
                       SampleDepth::bits16};
    const std::uint64_t sensorPixels = std::uint64_t{sizes.raw_width} * sizes.raw_height;
    if (!negative.format.isWithinLimits() || !negative.format.canBeBuffered()
        || sensorPixels > maximumPixels())
        return failureOf(LIBRAW_TOO_BIG);
    negative.maxHalvings = isPlainMosaic(data, negative.format) ? 1 : 0;
    const std::uint64_t workingBytes = 4 * sizeof(std::uint16_t) * negative.format.pixels();
    negative.heldBytes = bytesOfSensorData(data) + workingBytes + negative.format.bytes();
    return negative;
}

Result<Bytes> previewOf(const Functions& library, std::shared_ptr<const ByteReader> reader, Sides sensor) {
    const std::uint64_t fileBytes = reader->size();
    const std::unique_ptr<Session> session = TRY(Session::open(library, std::move(reader)));
    libraw_data_t& data = session->data();
    const libraw_thumbnail_t& preview = data.thumbnail;
    const bool isSizeKnown = preview.twidth != 0 && preview.theight != 0;
    if (preview.tlength == 0 || preview.tlength > fileBytes
        || (isSizeKnown && !isLargeEnough({preview.twidth, preview.theight}, sensor)))
        return Bytes();
    if (library.unpackPreview(&data) != LIBRAW_SUCCESS || preview.tformat != LIBRAW_THUMBNAIL_JPEG
        || preview.thumb == nullptr)
        return Bytes();
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(preview.thumb);
    return Bytes(bytes, bytes + preview.tlength);
}

Result<PixelBuffer> develop(const Functions& library, std::shared_ptr<const ByteReader> reader,
                            const Negative& negative, int halvings, DamageRecord& damage) {
    const RowFormat format = negative.halved(halvings);
    const DevelopedPointer image = TRY(developed(library, std::move(reader), negative, halvings, damage));
    if (image->type != LIBRAW_IMAGE_BITMAP || image->width != format.width || image->height != format.height
        || image->bits != 16 || image->colors != format.channels())
        return Failure{Reason::malformed, "the camera raw file changed while it was read"};
    PixelBuffer pixels(format);
    std::memcpy(pixels.bytes.data(), image->data,
                std::min<std::size_t>(pixels.bytes.size(), image->data_size));
    return pixels;
}

} // namespace kestrine::raw
