#include "tests/platform/imageio/jp2/JP2Recipe.h"

#include "platform/host/BigEndian.h"
#include "tests/support/Pictures.h"

#include <algorithm>
#include <memory>
#include <string_view>

namespace kestrine::testing {

namespace {

/// A file in memory.
struct Output {
    Bytes bytes;
    std::size_t position = 0;
};

OPJ_SIZE_T write(void* from, OPJ_SIZE_T count, void* data) {
    auto& output = *static_cast<Output*>(data);
    output.bytes.resize(std::max(output.bytes.size(), output.position + count));
    std::copy_n(static_cast<const std::uint8_t*>(from), count,
                output.bytes.begin() + static_cast<std::ptrdiff_t>(output.position));
    output.position += count;
    return count;
}

OPJ_OFF_T skip(OPJ_OFF_T count, void* data) {
    static_cast<Output*>(data)->position += static_cast<std::size_t>(count);
    return count;
}

OPJ_BOOL seek(OPJ_OFF_T position, void* data) {
    static_cast<Output*>(data)->position = static_cast<std::size_t>(position);
    return OPJ_TRUE;
}

opj_image_t* imageOf(const JP2Recipe& recipe) {
    const RowFormat& format = recipe.pixels.format;
    const unsigned full = format.depth == SampleDepth::bits8 ? 8 : 16,
                   bits = recipe.bits == 0 ? full : recipe.bits;
    opj_image_cmptparm_t parameters[4]{};
    for (opj_image_cmptparm_t& component : parameters) {
        component.dx = component.dy = 1;
        component.w = format.width;
        component.h = format.height;
        component.x0 = recipe.left;
        component.y0 = recipe.top;
        component.prec = bits;
        component.sgnd = recipe.isSigned ? 1 : 0;
    }
    opj_image_t* image =
        opj_image_create(static_cast<OPJ_UINT32>(format.channels()), parameters, recipe.space);
    image->x0 = recipe.left;
    image->y0 = recipe.top;
    image->x1 = recipe.left + format.width;
    image->y1 = recipe.top + format.height;
    if (format.hasAlpha && recipe.marksAlpha)
        image->comps[format.channels() - 1].alpha = 1;
    for (std::size_t c = 0; c < format.channels(); ++c)
        for (std::uint32_t y = 0; y < format.height; ++y)
            for (std::uint32_t x = 0; x < format.width; ++x)
                image->comps[c].data[std::size_t{y} * format.width + x] =
                    static_cast<OPJ_INT32>(sampleAt(recipe.pixels, x, y, c) >> (full - bits))
                    - (recipe.isSigned ? 1 << (bits - 1) : 0);
    return image;
}

opj_cparameters_t parametersOf(const JP2Recipe& recipe) {
    opj_cparameters_t parameters;
    opj_set_default_encoder_parameters(&parameters);
    parameters.tcp_numlayers = 1;
    parameters.cp_disto_alloc = 1;
    parameters.tcp_rates[0] = recipe.rate;
    parameters.irreversible = recipe.rate == 0 ? 0 : 1;
    parameters.numresolution = recipe.resolutions;
    parameters.tcp_mct = recipe.pixels.format.colorChannels() == 3 ? 1 : 0;
    if (recipe.tile != 0) {
        parameters.tile_size_on = OPJ_TRUE;
        parameters.cp_tdx = parameters.cp_tdy = static_cast<int>(recipe.tile);
    }
    return parameters;
}

/// `file` with a profile in its colour box, which the library cannot write.
Bytes withProfile(Bytes file, ByteView icc) {
    const auto find = [&file](std::string_view name) {
        return std::search(file.begin(), file.end(), name.begin(), name.end()) - file.begin();
    };
    constexpr std::size_t oldBox = 15; // a number for the colour space
    const auto setLength = [&file](std::ptrdiff_t name, std::size_t length) {
        Bytes bytes;
        appendBigEndian(bytes, length, 4);
        std::ranges::copy(bytes, file.begin() + name - 4);
    };
    const std::ptrdiff_t header = find("jp2h"), color = find("colr");
    const std::size_t headerLength =
        bigEndian(ByteView(file).subspan(static_cast<std::size_t>(header) - 4, 4));
    setLength(header, headerLength - oldBox + 11 + icc.size());
    setLength(color, 11 + icc.size());
    file[static_cast<std::size_t>(color) + 4] = 2; // a restricted profile
    const auto content = file.begin() + color + 7;
    file.insert(file.erase(content, content + 4), icc.begin(), icc.end());
    return file;
}

} // namespace

Bytes JP2Recipe::make() const {
    Output output;
    const std::unique_ptr<opj_image_t, decltype(&opj_image_destroy)> image(imageOf(*this), opj_image_destroy);
    const std::unique_ptr<opj_codec_t, decltype(&opj_destroy_codec)> encoder(
        opj_create_compress(isBare ? OPJ_CODEC_J2K : OPJ_CODEC_JP2), opj_destroy_codec);
    const std::unique_ptr<opj_stream_t, decltype(&opj_stream_destroy)> stream(
        opj_stream_create(1 << 16, OPJ_FALSE), opj_stream_destroy);
    opj_stream_set_write_function(stream.get(), write);
    opj_stream_set_skip_function(stream.get(), skip);
    opj_stream_set_seek_function(stream.get(), seek);
    opj_stream_set_user_data(stream.get(), &output, nullptr);
    opj_cparameters_t parameters = parametersOf(*this);
    if (!opj_setup_encoder(encoder.get(), &parameters, image.get())
        || !opj_start_compress(encoder.get(), image.get(), stream.get())
        || !opj_encode(encoder.get(), stream.get()) || !opj_end_compress(encoder.get(), stream.get()))
        return {};
    return icc.empty() ? output.bytes : withProfile(output.bytes, icc);
}

} // namespace kestrine::testing
