// Reads any bytes as an EXIF block. The carried block must fit a segment, and carrying it again must not
// change it.
#include "platform/imageio/exif/CarriedExif.h"
#include "platform/imageio/exif/ExifFacts.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kestrine;
    constexpr std::size_t largestBlock = 65527;
    const ByteView block(data, size);
    (void)readExifFacts(block);
    for (const bool turned : {false, true}) {
        const Bytes carried = carriedExif(block, {1200, 800, turned});
        if (carried.size() > largestBlock || carriedExif(carried, {1200, 800, turned}) != carried)
            std::abort();
    }
    return 0;
}
