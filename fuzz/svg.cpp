// Decodes any bytes as an SVG drawing.
#include "fuzz/DecodeEverything.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::uint64_t affordablePixels = 1 << 16;
    kestrine::fuzzing::decodeEverything(kestrine::svg::codec, data, size, affordablePixels);
    return 0;
}
