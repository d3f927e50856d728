// Input: gives libjpeg-turbo the bytes of a ByteReader, in pieces.
#pragma once

#include "platform/host/files/ByteReader.h"
#include "platform/imageio/jpeg/Library.h"

#include <array>
#include <memory>

namespace kestrine::jpeg {

/// A file that ends too early is continued with an EOI marker, so that the existing part is decoded and the
/// rest is grey, as in viewers.
struct Input {
    /// The first member, so that the library's pointer to it is one to the Input.
    jpeg_source_mgr manager;
    const ByteReader* reader;
    std::uint64_t offset;
    bool hasEnded; ///< whether the library asked for more bytes than the file has
    std::array<std::uint8_t, 64 * 1024> buffer;

    void attach(jpeg_decompress_struct& info, const ByteReader& bytes);
};

} // namespace kestrine::jpeg
