// Decodes any bytes as an ICO or CUR file.
#include "fuzz/DecodeEverything.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kestrine::fuzzing::decodeEverything(kestrine::ico::codec, data, size, 1 << 16);
    return 0;
}
