// Inflater: decompresses the deflate data of one TIFF strip or tile at once.
#pragma once

#include "platform/host/Bytes.h"

#include <memory>

struct libdeflate_decompressor;

namespace kestrine::tiff {

/// Only one thread may use it at a time.
class Inflater {
public:
    Inflater();

    /// Fills `into` from a zlib stream that has exactly so many bytes and a correct checksum; bytes after the
    /// stream are ignored, as libtiff does. Otherwise returns false, with any content of `into`.
    bool decode(ByteView stream, std::span<std::uint8_t> into);

private:
    struct Deleter {
        void operator()(libdeflate_decompressor* decompressor) const;
    };
    std::unique_ptr<libdeflate_decompressor, Deleter> decompressor_;
};

} // namespace kestrine::tiff
