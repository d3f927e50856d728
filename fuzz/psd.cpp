// Decodes any bytes as a PSD or PSB file.
#include "fuzz/DecodeEverything.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kestrine::fuzzing::decodeEverything(kestrine::psd::codec, data, size, 1 << 16);
    return 0;
}
