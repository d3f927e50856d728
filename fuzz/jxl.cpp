// Decodes any bytes as a JPEG XL file.
#include "fuzz/DecodeEverything.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kestrine::fuzzing::decodeEverything(kestrine::jxl::codec, data, size);
    return 0;
}
