#include "tests/platform/imageio/jxl/JXLRecipe.h"

#include <memory>

namespace kestrine::testing {

namespace {

JxlBasicInfo infoOf(const JXLRecipe& recipe) {
    const RowFormat& format = recipe.pixels.format;
    const std::uint32_t bits = format.depth == SampleDepth::bits8 ? 8 : 16;
    JxlBasicInfo info;
    JxlEncoderInitBasicInfo(&info);
    info.xsize = format.width;
    info.ysize = format.height;
    info.bits_per_sample = bits;
    info.num_color_channels = static_cast<std::uint32_t>(format.colorChannels());
    info.num_extra_channels = format.hasAlpha ? 1 : 0;
    info.alpha_bits = format.hasAlpha ? bits : 0;
    info.uses_original_profile = recipe.isLossless ? JXL_TRUE : JXL_FALSE;
    info.orientation = static_cast<JxlOrientation>(recipe.orientation);
    info.have_animation = recipe.frames > 1 ? JXL_TRUE : JXL_FALSE;
    info.animation.tps_numerator = 10;
    info.animation.tps_denominator = 1;
    return info;
}

bool addFrame(const JXLRecipe& recipe, JxlEncoderFrameSettings* settings) {
    const RowFormat& format = recipe.pixels.format;
    const JxlPixelFormat layout{static_cast<std::uint32_t>(format.channels()),
                                format.depth == SampleDepth::bits8 ? JXL_TYPE_UINT8 : JXL_TYPE_UINT16,
                                JXL_NATIVE_ENDIAN, 0};
    if (recipe.frames > 1) {
        JxlFrameHeader header;
        JxlEncoderInitFrameHeader(&header);
        header.duration = 1;
        JxlEncoderSetFrameHeader(settings, &header);
    }
    return JxlEncoderAddImageFrame(settings, &layout, recipe.pixels.bytes.data(), recipe.pixels.bytes.size())
           == JXL_ENC_SUCCESS;
}

Bytes outputOf(JxlEncoder* encoder) {
    Bytes file(1 << 16);
    std::size_t filled = 0;
    for (;;) {
        std::uint8_t* next = file.data() + filled;
        std::size_t left = file.size() - filled;
        const JxlEncoderStatus status = JxlEncoderProcessOutput(encoder, &next, &left);
        filled = file.size() - left;
        if (status == JXL_ENC_SUCCESS) {
            file.resize(filled);
            return file;
        }
        if (status != JXL_ENC_NEED_MORE_OUTPUT)
            return {};
        file.resize(2 * file.size());
    }
}

} // namespace

JxlColorEncoding JXLRecipe::sRGB(bool isGray) {
    JxlColorEncoding color;
    JxlColorEncodingSetToSRGB(&color, isGray ? JXL_TRUE : JXL_FALSE);
    return color;
}

Bytes JXLRecipe::make() const {
    const std::unique_ptr<JxlEncoder, decltype(&JxlEncoderDestroy)> encoder(JxlEncoderCreate(nullptr),
                                                                            JxlEncoderDestroy);
    const JxlBasicInfo info = infoOf(*this);
    if (!exif.empty() && JxlEncoderUseBoxes(encoder.get()) != JXL_ENC_SUCCESS)
        return {};
    JxlEncoderSetCodestreamLevel(encoder.get(), 10); // more than 8 bits, lossless
    if (JxlEncoderSetBasicInfo(encoder.get(), &info) != JXL_ENC_SUCCESS)
        return {};
    if ((icc.empty() ? JxlEncoderSetColorEncoding(encoder.get(), &color)
                     : JxlEncoderSetICCProfile(encoder.get(), icc.data(), icc.size()))
        != JXL_ENC_SUCCESS)
        return {};
    JxlEncoderFrameSettings* settings = JxlEncoderFrameSettingsCreate(encoder.get(), nullptr);
    JxlEncoderSetFrameLossless(settings, isLossless ? JXL_TRUE : JXL_FALSE);
    if (!isLossless)
        JxlEncoderSetFrameDistance(settings, 0.1F);
    JxlEncoderFrameSettingsSetOption(settings, JXL_ENC_FRAME_SETTING_EFFORT, 3);
    for (int frame = 0; frame < frames; ++frame)
        if (!addFrame(*this, settings))
            return {};
    if (!exif.empty())
        JxlEncoderAddBox(encoder.get(), "Exif", exif.data(), exif.size(),
                         isCompressedBox ? JXL_TRUE : JXL_FALSE);
    JxlEncoderCloseInput(encoder.get());
    return outputOf(encoder.get());
}

} // namespace kestrine::testing
