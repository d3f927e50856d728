#include "platform/imageio/psd/Header.h"

#include "platform/imageio/psd/Fields.h"

#include <algorithm>
#include <array>

namespace kestrine::psd {

namespace {

enum Version : unsigned { psd = 1, psb = 2 };

struct ModelOfMode {
    unsigned mode;
    Model model;
    std::size_t planes;
    ColorModel delivered;
};

/// Duotones are shown in grey, since their inks are not defined publicly.
constexpr std::array<ModelOfMode, 7> models = {{
    {0, Model::bits, 1, ColorModel::gray},
    {1, Model::gray, 1, ColorModel::gray},
    {2, Model::indexed, 1, ColorModel::rgb},
    {3, Model::rgb, 3, ColorModel::rgb},
    {4, Model::cmyk, 4, ColorModel::rgb},
    {8, Model::gray, 1, ColorModel::gray},
    {9, Model::lab, 3, ColorModel::rgb},
}};

bool isKnownDepth(Model model, std::uint64_t bits) {
    switch (model) {
    case Model::bits:
        return bits == 1;
    case Model::indexed:
        return bits == 8;
    case Model::gray:
    case Model::rgb:
        return bits == 8 || bits == 16 || bits == 32;
    case Model::cmyk:
    case Model::lab:
        return bits == 8 || bits == 16;
    }
    return false;
}

Failure endedInHeader() { return {Reason::truncated, "the PSD file ends before its picture"}; }

/// Reads the first 26 bytes.
Result<Header> readFields(ForwardReader& input) {
    input.moveTo(4);
    const auto version = readNumber(input, 2);
    input.moveTo(12);
    const auto planes = readNumber(input, 2), height = readNumber(input, 4), width = readNumber(input, 4),
               bits = readNumber(input, 2), mode = readNumber(input, 2);
    if (!mode)
        return endedInHeader();
    const auto known = std::ranges::find(models, *mode, &ModelOfMode::mode);
    if (known == models.end())
        return Failure{Reason::unsupported, "the PSD has an unknown or multichannel colour mode"};
    if (!isKnownDepth(known->model, *bits))
        return Failure{Reason::unsupported, "the PSD has an unknown depth"};
    if (*planes < known->planes)
        return Failure{Reason::malformed, "the PSD has too few channels"};
    Header header;
    header.format = {static_cast<std::uint32_t>(*width), static_cast<std::uint32_t>(*height),
                     known->delivered, false, *bits > 8 ? SampleDepth::bits16 : SampleDepth::bits8};
    header.model = known->model;
    header.bits = static_cast<unsigned>(*bits);
    header.planes = static_cast<std::uint32_t>(*planes);
    header.isLarge = *version == psb;
    return header;
}

/// A part of the file that begins with its length.
struct Section {
    std::uint64_t begin, end;
};

/// Moves `input` to the begin of the section at the current position. A section that ends outside the file
/// is a failure.
Result<Section> enterSection(ForwardReader& input, std::size_t lengthBytes, std::uint64_t fileLength) {
    const std::optional<std::uint64_t> length = readNumber(input, lengthBytes);
    const std::uint64_t begin = input.offset();
    if (!length || *length > fileLength - std::min(fileLength, begin))
        return endedInHeader();
    return Section{begin, begin + *length};
}

/// All reds are stored first, then all greens, then all blues.
Result<Bytes> readPalette(ForwardReader& input, const Section& section) {
    constexpr std::size_t colors = 256;
    std::array<std::uint8_t, 3 * colors> stored{};
    if (section.end - section.begin < stored.size() || input.read(stored) != stored.size())
        return Failure{Reason::malformed, "the indexed PSD has no colours"};
    Bytes palette;
    for (std::size_t i = 0; i < colors; ++i)
        for (std::size_t channel = 0; channel < 3; ++channel)
            palette.push_back(stored[channel * colors + i]);
    return palette;
}

Result<void> readCompression(ForwardReader& input, Header& header) {
    enum Compression : unsigned { none = 0, runLength = 1 };
    const std::optional<std::uint64_t> compression = readNumber(input, 2);
    if (!compression)
        return endedInHeader();
    if (*compression > runLength)
        return Failure{Reason::unsupported, "the PSD has an unknown compression"};
    header.isRunLength = *compression == runLength;
    header.pixelOffset = input.offset();
    return {};
}

} // namespace

std::size_t Header::colorPlanes() const {
    return std::ranges::find(models, model, &ModelOfMode::model)->planes;
}

std::size_t Header::usedPlanes() const {
    return colorPlanes() + (format.hasAlpha && model != Model::indexed ? 1 : 0);
}

bool isPSD(ByteView head) {
    return head.size() >= 6 && bigEndian(head.first(4)) == fourCC("8BPS") && head[4] == 0
           && (head[5] == psd || head[5] == psb);
}

Result<Header> readHeader(const std::shared_ptr<const ByteReader>& reader) {
    ForwardReader input(reader);
    Header header = TRY(readFields(input));
    const Section colors = TRY(enterSection(input, 4, reader->size()));
    if (header.model == Model::indexed)
        header.palette = TRY(readPalette(input, colors));
    input.moveTo(colors.end);
    const Section resources = TRY(enterSection(input, 4, reader->size()));
    header.resources = readResources(input, resources.end);
    input.moveTo(resources.end);
    const Section layers = TRY(enterSection(input, header.isLarge ? 8 : 4, reader->size()));
    header.layers = readLayers(input, layers.end, header.isLarge);
    input.moveTo(layers.end);
    if (!header.resources.hasMergedPicture && header.layers.count > 0)
        return Failure{Reason::unsupported,
                       "the PSD holds only layers; save it with the option to maximise compatibility"};
    header.format.hasAlpha = header.model == Model::indexed
                                 ? header.resources.transparentIndex.has_value()
                                 : header.layers.hasMergedAlpha && header.planes > header.colorPlanes();
    TRY(readCompression(input, header));
    return header;
}

} // namespace kestrine::psd
