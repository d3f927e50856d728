// Input: feeds the JPEG library from a ByteReader, in pieces.
#pragma once

#include "platform/host/files/ByteReader.h"
#include "platform/imageio/jpeg/Library.h"

#include <array>
#include <memory>

namespace kestrine::jpeg {

/// A file that ends too early is continued with an end-of-image marker, so that what there is gets decoded
/// and the rest stays grey, as viewers show it.
struct Input {
    jpeg_source_mgr manager; ///< first, so that the library's pointer is one to this
    const ByteReader* reader;
    std::uint64_t offset;
    bool hasEnded; ///< whether more was asked for than there is
    std::array<std::uint8_t, 64 * 1024> buffer;

    void attach(jpeg_decompress_struct& info, const ByteReader& bytes);
};

} // namespace kestrine::jpeg
