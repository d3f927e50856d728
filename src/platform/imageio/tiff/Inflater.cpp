#include "platform/imageio/tiff/Inflater.h"

#include <libdeflate.h>
#include <new>

namespace kestrine::tiff {

void Inflater::Deleter::operator()(libdeflate_decompressor* decompressor) const {
    libdeflate_free_decompressor(decompressor);
}

Inflater::Inflater() : decompressor_(libdeflate_alloc_decompressor()) {
    if (!decompressor_)
        throw std::bad_alloc();
}

bool Inflater::decode(ByteView stream, std::span<std::uint8_t> into) {
    // Without a place for the number of bytes, all of `into` must be filled.
    return libdeflate_zlib_decompress(decompressor_.get(), stream.data(), stream.size(), into.data(),
                                      into.size(), nullptr)
           == LIBDEFLATE_SUCCESS;
}

} // namespace kestrine::tiff
