#include "platform/imageio/OutputFormats.h"

#include "platform/imageio/Codecs.h"

#include <array>

namespace kestrine {

namespace {

constexpr std::array<OutputFormat, 4> outputFormatTable = {{
    {FileType::jpeg, "jpeg", "jpg", false, false, false, jpeg::encode},
    {FileType::png, "png", "png", true, true, false, png::encode},
    {FileType::tiff, "tiff", "tiff", true, true, false, tiff::encode},
    {FileType::gif, "gif", "gif", true, false, true, gif::encode},
}};

constexpr bool isInOrder() {
    for (std::size_t i = 0; i < outputFormatTable.size(); ++i)
        if (outputFormatTable[i].type != static_cast<FileType>(i))
            return false;
    return true;
}
static_assert(isInOrder());

} // namespace

std::span<const OutputFormat> outputFormats() { return outputFormatTable; }

const OutputFormat& outputFormat(FileType type) { return outputFormatTable[static_cast<std::size_t>(type)]; }

const OutputFormat* outputFormatNumbered(std::int32_t number) {
    const bool isKnown = number >= 0 && number < static_cast<std::int32_t>(outputFormatTable.size());
    return isKnown ? &outputFormatTable[static_cast<std::size_t>(number)] : nullptr;
}

} // namespace kestrine
