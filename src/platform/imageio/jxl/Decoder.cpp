// Reads JPEG XL files with libjxl: the bare codestream and the container, the first frame of animations. The
// library applies the orientation of the codestream. The whole picture is held in memory.

#include "platform/coregraphics/Premultiplication.h"
#include "platform/coregraphics/RowsAhead.h"
#include "platform/host/BigEndian.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/WholePicture.h"
#include "platform/imageio/exif/ExifBlock.h"
#include "platform/imageio/jxl/Session.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kestrine::jxl {

namespace {

/// What the library holds of a picture while it decodes: three channels in floating point.
constexpr std::uint64_t libraryBytesPerPixel = 12;
constexpr std::size_t maximumExifBytes = std::size_t{16} << 20;
constexpr std::size_t maximumProfileBytes = std::size_t{16} << 20;

/// What the header says.
struct Header {
    RowFormat format;
    bool isPremultiplied = false;
    bool isAnimation = false;
    bool hasContainer = false;
    std::optional<ColorProfile> profile;
};

bool isSRGB(const JxlColorEncoding& color) {
    const bool isGray = color.color_space == JXL_COLOR_SPACE_GRAY;
    return (isGray || (color.color_space == JXL_COLOR_SPACE_RGB && color.primaries == JXL_PRIMARIES_SRGB))
           && color.white_point == JXL_WHITE_POINT_D65
           && color.transfer_function == JXL_TRANSFER_FUNCTION_SRGB;
}

/// The profile of the delivered pixels; none if they are sRGB.
std::optional<ColorProfile> deliveredProfile(const Functions& library, const Session& session,
                                             ColorModel model) {
    JxlColorEncoding color{};
    constexpr auto delivered = JXL_COLOR_PROFILE_TARGET_DATA;
    if (library.encodedProfile(session.decoder(), nullptr, delivered, &color) == JXL_DEC_SUCCESS
        && isSRGB(color))
        return std::nullopt;
    std::size_t size = 0;
    if (library.profileSize(session.decoder(), nullptr, delivered, &size) != JXL_DEC_SUCCESS
        || size > maximumProfileBytes)
        return std::nullopt;
    Bytes icc(size);
    if (library.profile(session.decoder(), nullptr, delivered, icc.data(), size) != JXL_DEC_SUCCESS)
        return std::nullopt;
    return ColorProfile::fromICC(icc, model);
}

bool hasInkChannel(const Functions& library, const Session& session, const JxlBasicInfo& info) {
    for (std::uint32_t i = 0; i < info.num_extra_channels; ++i) {
        JxlExtraChannelInfo channel{};
        if (library.extraChannel(session.decoder(), i, &channel) == JXL_DEC_SUCCESS
            && channel.type == JXL_CHANNEL_BLACK)
            return true;
    }
    return false;
}

Result<Header> readHeader(const Functions& library, std::shared_ptr<const ByteReader> reader) {
    Session session =
        TRY(Session::begin(library, std::move(reader), JXL_DEC_BASIC_INFO | JXL_DEC_COLOR_ENCODING));
    JxlBasicInfo info{};
    for (const JxlDecoderStatus part : {JXL_DEC_BASIC_INFO, JXL_DEC_COLOR_ENCODING})
        if (TRY(session.advance()) != part || library.basicInfo(session.decoder(), &info) != JXL_DEC_SUCCESS)
            return Failure{Reason::malformed, "the JPEG XL file has no header"};
    if (hasInkChannel(library, session, info))
        return Failure{Reason::unsupported, "JPEG XL pictures in CMYK are not supported"};
    Header header;
    const std::uint32_t bits = std::max(info.bits_per_sample, info.alpha_bits);
    header.format = {.width = info.xsize,
                     .height = info.ysize,
                     .model = info.num_color_channels == 1 ? ColorModel::gray : ColorModel::rgb,
                     .hasAlpha = info.alpha_bits != 0,
                     .depth = bits > 8 ? SampleDepth::bits16 : SampleDepth::bits8};
    header.isPremultiplied = info.alpha_premultiplied != 0;
    header.isAnimation = info.have_animation != 0;
    header.hasContainer = info.have_container != 0;
    header.profile = deliveredProfile(library, session, header.format.model);
    return header;
}

Result<PixelBuffer> decodeFirstFrame(const Functions& library, std::shared_ptr<const ByteReader> reader,
                                     const Header& header) {
    Session session = TRY(Session::begin(library, std::move(reader), JXL_DEC_FULL_IMAGE));
    session.useThreads(usefulThreads(header.format));
    PixelBuffer pixels(header.format);
    const bool is16Bits = header.format.depth == SampleDepth::bits16;
    const JxlPixelFormat layout{static_cast<std::uint32_t>(header.format.channels()),
                                is16Bits ? JXL_TYPE_UINT16 : JXL_TYPE_UINT8, JXL_NATIVE_ENDIAN, 0};
    for (;;) {
        const JxlDecoderStatus status = TRY(session.advance());
        if (status == JXL_DEC_FULL_IMAGE)
            break;
        if (status != JXL_DEC_NEED_IMAGE_OUT_BUFFER
            || library.setPixels(session.decoder(), &layout, pixels.bytes.data(), pixels.bytes.size())
                   != JXL_DEC_SUCCESS)
            return Failure{Reason::malformed, "the JPEG XL picture cannot be decoded"};
    }
    if (header.isPremultiplied && header.format.hasAlpha)
        undoPremultiplication(header.format, pixels.bytes);
    return pixels;
}

/// The content of the first box with EXIF data, without the number that says where the block begins in it.
Bytes readExif(const Functions& library, std::shared_ptr<const ByteReader> reader) {
    Result<Session> begun = Session::begin(library, std::move(reader), JXL_DEC_BOX);
    if (!begun)
        return {};
    Session& session = *begun;
    library.setDecompressBoxes(session.decoder(), JXL_TRUE);
    Bytes box;
    std::size_t filled = 0;
    const auto enlarge = [&] {
        filled = box.size() - library.releaseBox(session.decoder());
        box.resize(std::max<std::size_t>(2 * box.size(), 1 << 16));
        library.setBox(session.decoder(), box.data() + filled, box.size() - filled);
    };
    for (Result<JxlDecoderStatus> status = session.advance(); status; status = session.advance()) {
        if (*status == JXL_DEC_BOX_NEED_MORE_OUTPUT && box.size() < maximumExifBytes) {
            enlarge();
            continue;
        }
        if (!box.empty() || *status != JXL_DEC_BOX)
            break;
        JxlBoxType type{};
        if (library.boxType(session.decoder(), type, JXL_TRUE) == JXL_DEC_SUCCESS
            && std::string_view(type, sizeof type) == "Exif")
            enlarge();
    }
    box.resize(box.size() - (box.empty() ? 0 : library.releaseBox(session.decoder())));
    const std::uint64_t begin = box.size() < 4 ? 0 : 4 + bigEndian(ByteView(box).first(4));
    if (begin == 0 || begin >= box.size())
        return {};
    return Bytes(box.begin() + static_cast<std::ptrdiff_t>(begin), box.end());
}

std::uint32_t countFrames(const Functions& library, std::shared_ptr<const ByteReader> reader) {
    std::uint32_t count = 0;
    if (Result<Session> session = Session::begin(library, std::move(reader), JXL_DEC_FRAME); session)
        for (auto event = session->advance(); event && *event == JXL_DEC_FRAME; event = session->advance())
            ++count;
    return count;
}

class Decoder final : public ImageDecoder {
public:
    Decoder(const Functions& library, std::shared_ptr<const ByteReader> reader, Header header)
        : library_(library), reader_(std::move(reader)), header_(std::move(header)),
          exif_(header_.hasContainer ? uprightExif(readExif(library_, reader_)) : Bytes()) {
        const ExifFacts facts = readExifFacts(exif_);
        frames_.push_back(
            {.format = header_.format,
             .resolution = facts.resolution.value_or(Resolution{}),
             .profile = header_.profile,
             .heldBytes = header_.format.bytes() + libraryBytesPerPixel * header_.format.pixels()});
    }

    Result<RowSourcePointer> rows(std::size_t, int) const override {
        return rowsOfWholePicture(header_.format, [library = &library_, reader = reader_, header = header_] {
            return decodeFirstFrame(*library, reader, header);
        });
    }

    Result<Bytes> exif() const override { return exif_; }

    FileContents contents() const override {
        if (!header_.isAnimation)
            return {};
        return FileContents::several(FileContents::Kind::animation, countFrames(library_, reader_));
    }

private:
    const Functions& library_;
    const std::shared_ptr<const ByteReader> reader_;
    const Header header_;
    const Bytes exif_; ///< upright: the orientation of the codestream is already applied
};

bool recognises(ByteView head) {
    using namespace std::string_view_literals;
    const std::string_view start(reinterpret_cast<const char*>(head.data()), head.size());
    return start.starts_with("\xff\x0a"sv) || start.starts_with("\0\0\0\x0cJXL \r\n\x87\n"sv);
}

Result<std::unique_ptr<ImageDecoder>> open(std::shared_ptr<const ByteReader> reader) {
    const Result<Functions>& library = installedFunctions();
    if (!library)
        return library.failure();
    Header header = TRY(readHeader(*library, reader));
    if (!header.format.isWithinLimits() || !header.format.canBeBuffered())
        return Failure{Reason::tooLarge, "the JPEG XL picture has too many pixels"};
    return std::unique_ptr<ImageDecoder>(
        std::make_unique<Decoder>(*library, std::move(reader), std::move(header)));
}

} // namespace

const ImageCodec codec{"JPEG XL", recognises, open, [] { (void)installedFunctions(); }};

} // namespace kestrine::jxl
