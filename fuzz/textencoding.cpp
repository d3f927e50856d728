// Detects the encoding of any bytes. There must always be one, and the string must not be longer than the
// bytes.
#include "_MyClasses/Category/StringUtility.h"
#include "platform/foundation/text/NSStringEncoding.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    using namespace kestrine;
    const OptionalString detected =
        StringUtility::stringWithContentsOfDataByAutoDetectingEncoding(NSData(Bytes(bytes, bytes + size)));
    if (!detected)
        std::abort();
    for (NSStringEncoding encoding = 3; encoding <= 30; encoding++)
        if (const OptionalString text = decodedText({bytes, size}, encoding); text && text->length() > size)
            std::abort();
    return 0;
}
