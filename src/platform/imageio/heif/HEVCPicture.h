// Decodes HEVC pictures with libde265.
#pragma once

#include "platform/imageio/heif/CodedPicture.h"

namespace kestrine::heif {

/// See decodePicture().
Result<std::unique_ptr<CodedPicture>> decodeHEVC(const CodingSetup& coding, ByteView data,
                                                 const Size& expected, std::size_t threads);

} // namespace kestrine::heif
