// Decodes any bytes as a HEIC or AVIF file.
#include "fuzz/DecodeEverything.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kestrine;
    // The libraries are slow, and their own projects fuzz them.
    constexpr std::uint64_t affordablePixels = 1 << 16;
    fuzzing::decodeEverything(heif::heicCodec, data, size, affordablePixels);
    fuzzing::decodeEverything(heif::avifCodec, data, size, affordablePixels);
    return 0;
}
