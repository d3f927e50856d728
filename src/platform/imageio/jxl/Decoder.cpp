// Reads JPEG XL files with libjxl: the bare codestream and the container, the first frame of animations. The
// library applies the orientation of the codestream. The whole picture is held in memory.

#include "platform/coregraphics/ColorConversion.h"
#include "platform/coregraphics/Premultiplication.h"
#include "platform/coregraphics/RowStages.h"
#include "platform/coregraphics/RowsAhead.h"
#include "platform/host/BigEndian.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/WholePicture.h"
#include "platform/imageio/exif/ExifFacts.h"
#include "platform/imageio/jxl/Session.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <type_traits>

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
    /// Whether the library cannot deliver the pixels in the space of the profile.
    bool needsConversion = false;
};

/// Primaries (and the white point of sRGB) that leave out hardly any colour of a profile.
constexpr Chromaticities wideChromaticities = {
    {0.3127, 0.3290}, {0.7347, 0.2653}, {0.1596, 0.8404}, {0.1000, 0.0050}};

/// What to ask the library for if it cannot deliver the space of the profile: the curve of sRGB with wide
/// primaries, or sRGB and its grey if the profile cannot be used.
JxlColorEncoding replacement(const Header& header) {
    JxlColorEncoding color{};
    color.color_space = header.format.model == ColorModel::gray ? JXL_COLOR_SPACE_GRAY : JXL_COLOR_SPACE_RGB;
    color.white_point = JXL_WHITE_POINT_D65;
    color.primaries = header.profile ? JXL_PRIMARIES_CUSTOM : JXL_PRIMARIES_SRGB;
    const auto set = [](double(&xy)[2], const Chromaticities::Point& point) {
        xy[0] = point.x;
        xy[1] = point.y;
    };
    set(color.primaries_red_xy, wideChromaticities.red);
    set(color.primaries_green_xy, wideChromaticities.green);
    set(color.primaries_blue_xy, wideChromaticities.blue);
    color.transfer_function = JXL_TRANSFER_FUNCTION_SRGB;
    color.rendering_intent = JXL_RENDERING_INTENT_RELATIVE;
    return color;
}

bool isSRGB(const JxlColorEncoding& color) {
    const bool isGray = color.color_space == JXL_COLOR_SPACE_GRAY;
    return (isGray || (color.color_space == JXL_COLOR_SPACE_RGB && color.primaries == JXL_PRIMARIES_SRGB))
           && color.white_point == JXL_WHITE_POINT_D65
           && color.transfer_function == JXL_TRANSFER_FUNCTION_SRGB;
}

/// Calls a function about profiles. Before version 0.9 these take the format of pixels too, and ignore it.
template <class Function, class... Values>
JxlDecoderStatus ask(Function* function, const Session& session, JxlColorProfileTarget pixels,
                     Values... values) {
    if constexpr (std::is_invocable_v<Function*, const JxlDecoder*, JxlColorProfileTarget, Values...>)
        return function(session.decoder(), pixels, values...);
    else
        return function(session.decoder(), nullptr, pixels, values...);
}

/// The profile of the stored or of the delivered pixels; none if they are sRGB.
std::optional<ColorProfile> profileOf(const Functions& library, const Session& session,
                                      JxlColorProfileTarget pixels, ColorModel model) {
    JxlColorEncoding color{};
    if (ask(library.encodedProfile, session, pixels, &color) == JXL_DEC_SUCCESS && isSRGB(color))
        return std::nullopt;
    std::size_t size = 0;
    if (ask(library.profileSize, session, pixels, &size) != JXL_DEC_SUCCESS || size > maximumProfileBytes)
        return std::nullopt;
    Bytes icc(size);
    if (ask(library.profile, session, pixels, icc.data(), size) != JXL_DEC_SUCCESS)
        return std::nullopt;
    return ColorProfile::fromICC(icc, model);
}

/// Lossy pictures are stored in a space of the format, from which the library converts only to spaces that
/// have a name. It would deliver linear sRGB in place of all others.
void readProfile(const Functions& library, const Session& session, const JxlBasicInfo& info, Header& header) {
    constexpr auto stored = JXL_COLOR_PROFILE_TARGET_ORIGINAL, delivered = JXL_COLOR_PROFILE_TARGET_DATA;
    JxlColorEncoding color{};
    const bool hasName = ask(library.encodedProfile, session, stored, &color) == JXL_DEC_SUCCESS;
    header.needsConversion = !info.uses_original_profile && !hasName;
    const ColorModel model = header.format.model;
    if (!header.needsConversion)
        header.profile = profileOf(library, session, delivered, model);
    else if (model == ColorModel::rgb)
        header.profile = profileOf(library, session, stored, model);
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
    readProfile(library, session, info, header);
    return header;
}

/// Pixels of `format`, in the replacement of their space if they need conversion.
Result<PixelBuffer> deliveredPixels(const Functions& library, std::shared_ptr<const ByteReader> reader,
                                    const Header& header, const RowFormat& format) {
    const int colorEvent = header.needsConversion ? JXL_DEC_COLOR_ENCODING : 0;
    Session session = TRY(Session::begin(library, std::move(reader), JXL_DEC_FULL_IMAGE | colorEvent));
    session.useThreads(usefulThreads(format));
    PixelBuffer pixels(format);
    const bool is16Bits = format.depth == SampleDepth::bits16;
    const JxlPixelFormat layout{static_cast<std::uint32_t>(format.channels()),
                                is16Bits ? JXL_TYPE_UINT16 : JXL_TYPE_UINT8, JXL_NATIVE_ENDIAN, 0};
    const JxlColorEncoding colors = replacement(header);
    for (;;) {
        const JxlDecoderStatus status = TRY(session.advance());
        if (status == JXL_DEC_FULL_IMAGE)
            break;
        const JxlDecoderStatus done =
            status == JXL_DEC_COLOR_ENCODING ? library.preferColors(session.decoder(), &colors)
            : status == JXL_DEC_NEED_IMAGE_OUT_BUFFER
                ? library.setPixels(session.decoder(), &layout, pixels.bytes.data(), pixels.bytes.size())
                : JXL_DEC_ERROR;
        if (done != JXL_DEC_SUCCESS)
            return Failure{Reason::malformed, "the JPEG XL picture cannot be decoded"};
    }
    if (header.isPremultiplied && format.hasAlpha)
        undoPremultiplication(format, pixels.bytes);
    return pixels;
}

Result<PixelBuffer> decodeFirstFrame(const Functions& library, std::shared_ptr<const ByteReader> reader,
                                     const Header& header) {
    if (!header.needsConversion || !header.profile)
        return deliveredPixels(library, std::move(reader), header, header.format);
    RowFormat deep = header.format;
    deep.depth = SampleDepth::bits16;
    auto pixels =
        std::make_shared<const PixelBuffer>(TRY(deliveredPixels(library, std::move(reader), header, deep)));
    const auto wide = ColorProfile::fromSRGBCurve(wideChromaticities, "Wide");
    RowSourcePointer rows = rowsInProfile(rowsOfPixels(std::move(pixels)), wide.value(), *header.profile);
    if (header.format.depth == SampleDepth::bits8)
        rows = rowsOf8Bits(std::move(rows));
    return readAllRows(*rows);
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
             .heldBytes = header_.format.bytes() + heldBytesPerPixel() * header_.format.pixels()});
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
    std::uint64_t heldBytesPerPixel() const {
        constexpr std::uint64_t bytesPerDeepSample = 2;
        return libraryBytesPerPixel
               + (header_.needsConversion ? bytesPerDeepSample * header_.format.channels() : 0);
    }

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
