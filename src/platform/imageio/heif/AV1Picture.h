// Decodes AV1 pictures with dav1d.
#pragma once

#include "platform/imageio/heif/CodedPicture.h"

namespace kestrine::heif {

/// See decodePicture().
Result<std::unique_ptr<CodedPicture>> decodeAV1(const CodingSetup& coding, ByteView data,
                                                const Size& expected, std::size_t threads);

/// What the sequence header in `data` says; nullopt if there is none.
std::optional<CodingPoints> pointsInSequenceHeader(ByteView data);

} // namespace kestrine::heif
