#include "platform/imageio/psd/Resources.h"

#include "platform/imageio/exif/ExifSegment.h"
#include "platform/imageio/psd/Fields.h"

namespace kestrine::psd {

namespace {

enum Identifier : std::uint16_t {
    resolutionInfo = 1005,
    profile = 1039,
    transparencyIndex = 1047,
    versionInfo = 1057,
    exifData = 1058,
};

/// Longer resources are ignored.
constexpr std::uint64_t maximumLength = std::uint64_t{16} << 20;

/// Reads a resolution. It is stored in pixels per inch with 16 fraction bits, whatever unit is shown to the
/// user.
Resolution resolutionIn(ByteView content) {
    constexpr std::size_t length = 16, vertical = 8;
    if (content.size() < length)
        return {};
    const auto value = [&](std::size_t at) {
        return static_cast<double>(bigEndian(content.subspan(at, 4))) / 65536;
    };
    return plausibleResolution(value(0), value(vertical));
}

void take(std::uint64_t identifier, Bytes content, Resources& resources) {
    switch (identifier) {
    case resolutionInfo:
        resources.resolution = resolutionIn(content);
        break;
    case profile:
        resources.icc = std::move(content);
        break;
    case transparencyIndex:
        if (content.size() >= 2 && content[0] == 0)
            resources.transparentIndex = content[1];
        break;
    case versionInfo:
        resources.hasMergedPicture = content.size() < 5 || content[4] != 0;
        break;
    case exifData:
        resources.exif = withoutExifSegmentMark(std::move(content));
        break;
    default:
        break;
    }
}

bool isSignature(std::uint64_t number) {
    constexpr std::uint32_t known[] = {fourCC("8BIM"), fourCC("MeSa"), fourCC("AgHg"), fourCC("PHUT"),
                                       fourCC("DCSR")};
    return std::ranges::find(known, number) != std::end(known);
}

bool isUsed(std::uint64_t identifier) {
    constexpr std::uint16_t used[] = {resolutionInfo, profile, transparencyIndex, versionInfo, exifData};
    return std::ranges::find(used, identifier) != std::end(used);
}

} // namespace

Resources readResources(ForwardReader& input, std::uint64_t end) {
    constexpr unsigned maximumResources = 1 << 16; // as many as there are identifiers
    Resources resources;
    for (unsigned i = 0; i < maximumResources && input.offset() < end; ++i) {
        const std::optional<std::uint64_t> mark = readNumber(input, 4), identifier = readNumber(input, 2);
        const int nameLength = input.next();
        if (!mark || !isSignature(*mark) || nameLength < 0)
            break;
        input.moveTo(input.offset() + (static_cast<unsigned>(nameLength) | 1)); // with its length even
        const std::optional<std::uint64_t> length = readNumber(input, 4);
        if (!length || *length > end - std::min(end, input.offset()))
            break;
        const std::uint64_t next = input.offset() + *length + *length % 2;
        if (isUsed(*identifier) && *length <= maximumLength) {
            Bytes content(static_cast<std::size_t>(*length));
            if (input.read(content) == content.size())
                take(*identifier, std::move(content), resources);
        }
        input.moveTo(next);
    }
    return resources;
}

} // namespace kestrine::psd
