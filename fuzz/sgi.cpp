// Decodes any bytes as an SGI file.
#include "fuzz/DecodeEverything.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kestrine::fuzzing::decodeEverything(kestrine::sgi::codec, data, size, 1 << 16);
    return 0;
}
