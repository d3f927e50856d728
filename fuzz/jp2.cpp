// Decodes any bytes as a JPEG 2000 file.
#include "fuzz/DecodeEverything.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kestrine::fuzzing::decodeEverything(kestrine::jp2::codec, data, size);
    return 0;
}
