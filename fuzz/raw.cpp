// Decodes bytes that begin with the signature of a camera raw or TIFF file as a camera raw file. Other input
// is ignored.
#include "fuzz/DecodeEverything.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kestrine;
    // LibRaw is slow, and its own project fuzzes it.
    constexpr std::uint64_t affordablePixels = 1 << 16;
    const Bytes bytes(data, data + size);
    const ByteView head = ByteView(bytes).first(std::min(size, maxHeadBytes));
    if (!raw::codec.recognises(head) && !tiff::codec.recognises(head))
        return 0;
    if (auto decoder = raw::codec.open(readerOfBytes(bytes)))
        fuzzing::useDecoder(**decoder, affordablePixels);
    return 0;
}
