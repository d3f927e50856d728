#include "platform/imageio/jp2/Components.h"

#include "platform/coregraphics/Premultiplication.h"

#include <algorithm>
#include <string_view>

namespace kestrine::jp2 {

namespace {

constexpr std::uint32_t colorUse = 0, premultipliedUse = 2;

bool isCMYKProfile(const Bytes& icc) {
    constexpr std::string_view space = "CMYK";
    return icc.size() >= 20 && std::equal(space.begin(), space.end(), icc.begin() + 16);
}

bool isSpace(const Container& container, NamedSpace space) {
    return container.space == static_cast<std::uint32_t>(space);
}

/// Whether the colours are YCbCr. If the file names no colour space, subsampled chroma means YCbCr.
bool isYCbCr(const opj_image_t& image, const Container& container) {
    if (isSpace(container, NamedSpace::yCbCr) || isSpace(container, NamedSpace::extendedYCbCr))
        return true;
    return !container.space && container.palette.columns.empty() && image.numcomps >= 3
           && image.comps[0].dx < image.comps[1].dx && image.comps[0].dx < image.comps[2].dx;
}

/// The channels of the file, checked against the codestream.
Result<std::vector<Channel>> storedChannels(const opj_image_t& image, const Container& container) {
    std::vector<Channel> channels =
        container.palette.columns.empty() ? std::vector<Channel>() : container.channels;
    for (std::uint32_t c = 0; channels.size() < image.numcomps && container.palette.columns.empty(); ++c)
        channels.push_back({c, std::nullopt});
    for (const Channel& channel : channels)
        if (channel.component >= image.numcomps
            || (channel.column && *channel.column >= container.palette.columns.size()))
            return Failure{Reason::malformed, "the JPEG 2000 file describes channels that it does not have"};
    return channels;
}

/// The channels that are colours, in order, then alpha.
struct Roles {
    std::vector<Channel> colors;
    std::optional<Channel> alpha;
    bool isPremultiplied = false;
};

Roles rolesOf(const std::vector<Channel>& channels, const std::vector<ChannelUse>& uses) {
    Roles roles;
    if (uses.empty()) {
        roles.colors = channels;
        return roles;
    }
    std::vector<std::pair<std::uint32_t, Channel>> colors;
    for (const ChannelUse& use : uses) {
        if (use.channel >= channels.size() || use.type > premultipliedUse)
            continue;
        if (use.type == colorUse) {
            colors.emplace_back(use.color, channels[use.channel]);
        } else if (!roles.alpha) {
            roles.alpha = channels[use.channel];
            roles.isPremultiplied = use.type == premultipliedUse;
        }
    }
    std::ranges::stable_sort(colors, {}, &std::pair<std::uint32_t, Channel>::first);
    for (const auto& [color, channel] : colors)
        roles.colors.push_back(channel);
    return roles;
}

unsigned bitsOf(const Channel& channel, const opj_image_t& image, const Palette& palette) {
    return channel.column ? palette.bits[*channel.column] : image.comps[channel.component].prec;
}

/// A sample of `bits` bits as a part of `full`.
std::uint64_t scaled(std::int64_t value, unsigned bits, std::uint64_t full) {
    const std::int64_t highest = (std::int64_t{1} << bits) - 1;
    const auto clamped = static_cast<std::uint64_t>(std::clamp<std::int64_t>(value, 0, highest));
    const auto top = static_cast<std::uint64_t>(highest);
    return top == full ? clamped : (clamped * full + top / 2) / top;
}

std::int64_t unsignedOf(OPJ_INT32 stored, const opj_image_comp_t& component) {
    return std::int64_t{stored} + (component.sgnd != 0 ? std::int64_t{1} << (component.prec - 1) : 0);
}

/// Rec. 601 with full range, as in JPEG.
template <class Sample>
void convertYCbCr(std::span<Sample> samples, std::size_t channels) {
    constexpr double full = static_cast<Sample>(~Sample{0}), half = (full + 1) / 2;
    const auto store = [full](double value) {
        return static_cast<Sample>(std::clamp(value, 0.0, full) + 0.5);
    };
    for (std::size_t i = 0; i + channels <= samples.size(); i += channels) {
        const double luma = samples[i], blue = samples[i + 1] - half, red = samples[i + 2] - half;
        samples[i] = store(luma + 1.402 * red);
        samples[i + 1] = store(luma - 0.344136 * blue - 0.714136 * red);
        samples[i + 2] = store(luma + 1.772 * blue);
    }
}

template <class Sample>
std::span<Sample> asSamples(std::span<std::uint8_t> bytes) {
    return {reinterpret_cast<Sample*>(bytes.data()), bytes.size() / sizeof(Sample)};
}

} // namespace

Result<Components> componentsOf(const opj_image_t& image, Container container) {
    const Failure unknown{Reason::unsupported, "the colour space of the JPEG 2000 picture is not supported"};
    Roles roles = rolesOf(TRY(storedChannels(image, container)), container.uses);
    const bool isCMYK = isSpace(container, NamedSpace::cmyk) || isCMYKProfile(container.icc);
    const std::size_t wanted = isCMYK ? 4 : roles.colors.size() >= 3 ? 3 : 1;
    if (roles.colors.size() < wanted || isSpace(container, NamedSpace::lab))
        return unknown;
    if (!roles.alpha && container.uses.empty() && roles.colors.size() == wanted + 1)
        roles.alpha = roles.colors.back(); // as other programs do when the file does not say it
    Components components;
    components.inks = isCMYK                                     ? Inks::cmyk
                      : wanted == 3 && isYCbCr(image, container) ? Inks::yCbCr
                                                                 : Inks::stored;
    components.channels.assign(roles.colors.begin(),
                               roles.colors.begin() + static_cast<std::ptrdiff_t>(wanted));
    if (roles.alpha)
        components.channels.push_back(*roles.alpha);
    components.isPremultiplied = roles.isPremultiplied;
    unsigned bits = 0;
    for (const Channel& channel : components.channels)
        bits = std::max(bits, bitsOf(channel, image, container.palette));
    if (bits == 0 || bits > 31)
        return Failure{Reason::unsupported, "JPEG 2000 samples of more than 31 bits are not supported"};
    components.format = {.width = image.x1 - image.x0,
                         .height = image.y1 - image.y0,
                         .model = wanted == 1 ? ColorModel::gray : ColorModel::rgb,
                         .hasAlpha = roles.alpha.has_value(),
                         .depth = bits > 8 ? SampleDepth::bits16 : SampleDepth::bits8};
    components.icc = std::move(container.icc);
    components.palette = std::move(container.palette);
    return components;
}

std::optional<ColorProfile> profileOf(const Components& components) {
    if (components.inks == Inks::cmyk)
        return ColorProfile::sRGB();
    return ColorProfile::fromICC(components.icc, components.format.model);
}

PixelMaker::PixelMaker(const Components& components) : components_(components) {
    if (components.inks != Inks::cmyk)
        return;
    inkConverter_ = ForeignConverter::create(ForeignModel::cmyk, components.format.depth,
                                             components.format.hasAlpha, components.icc);
    stored_.resize(components.channels.size() * components.format.bytesPerSample() * components.format.width);
}

template <class Sample>
void PixelMaker::gather(const opj_image_t& image, std::uint32_t y, std::uint32_t rows,
                        std::span<Sample> samples) const {
    constexpr std::uint64_t full = static_cast<Sample>(~Sample{0});
    const std::size_t channels = components_.channels.size(), width = samples.size() / channels;
    for (std::size_t c = 0; c < channels; ++c) {
        const Channel& channel = components_.channels[c];
        const opj_image_comp_t& component = image.comps[channel.component];
        const unsigned bits = bitsOf(channel, image, components_.palette);
        const std::size_t row = std::size_t{y} * component.h / rows;
        const OPJ_INT32* stored = component.data + row * component.w;
        for (std::size_t x = 0; x < width; ++x) {
            std::int64_t value = unsignedOf(stored[x * component.w / width], component);
            if (channel.column) {
                const std::vector<std::uint32_t>& entries = components_.palette.columns[*channel.column];
                value = entries[static_cast<std::size_t>(
                    std::clamp<std::int64_t>(value, 0, static_cast<std::int64_t>(entries.size()) - 1))];
            }
            samples[x * channels + c] = static_cast<Sample>(scaled(value, bits, full));
        }
    }
    if (components_.inks == Inks::yCbCr)
        convertYCbCr(samples, channels);
}

void PixelMaker::makeRow(const opj_image_t& image, std::uint32_t y, std::uint32_t rows,
                         std::span<std::uint8_t> row) {
    const std::size_t pixels = row.size() / components_.format.bytesPerPixel();
    const std::size_t storedBytes =
        pixels * components_.channels.size() * components_.format.bytesPerSample();
    const std::span<std::uint8_t> samples = inkConverter_ ? std::span(stored_).first(storedBytes) : row;
    if (components_.format.depth == SampleDepth::bits8)
        gather(image, y, rows, samples);
    else
        gather(image, y, rows, asSamples<std::uint16_t>(samples));
    if (inkConverter_)
        inkConverter_->convert(samples.data(), row.data(), pixels);
    if (components_.isPremultiplied)
        undoPremultiplication(components_.format, row);
}

} // namespace kestrine::jp2
