#include "platform/imageio/heif/CodedPicture.h"

#include "platform/imageio/heif/AV1Library.h"
#include "platform/imageio/heif/AV1Picture.h"
#include "platform/imageio/heif/HEVCLibrary.h"
#include "platform/imageio/heif/HEVCPicture.h"

namespace kestrine::heif {

Result<void> requireLibrary(CodingSetup::Kind kind) {
    if (kind == CodingSetup::Kind::hevc && !hevcFunctions())
        return hevcFunctions().failure();
    if (kind == CodingSetup::Kind::av1 && !av1Functions())
        return av1Functions().failure();
    return {};
}

Result<std::unique_ptr<CodedPicture>> decodePicture(const CodingSetup& coding, ByteView data,
                                                    const Size& expected, std::size_t threads) {
    TRY(requireLibrary(coding.kind));
    const auto decode = coding.kind == CodingSetup::Kind::hevc ? decodeHEVC : decodeAV1;
    std::unique_ptr<CodedPicture> picture = TRY(decode(coding, data, expected, threads));
    const Size& decoded = picture->planes().planes.front().size;
    if (decoded.width < expected.width || decoded.height < expected.height)
        return damagedFile("a coded picture is smaller than the file says");
    return picture;
}

std::optional<CodingPoints> pointsInHeader(const CodingSetup& coding, ByteView startOfData) {
    if (coding.kind != CodingSetup::Kind::av1)
        return std::nullopt;
    return pointsInSequenceHeader(startOfData);
}

std::uint64_t bytesToDecode(const CodingSetup& coding, const Size& size) {
    const std::uint64_t samples = std::uint64_t{size.width} * size.height * (coding.isMonochrome ? 1 : 3);
    const std::uint64_t planes = samples * (coding.bits > 8 ? 2 : 1);
    return planes + samples;
}

} // namespace kestrine::heif
