// Reads any bytes as the message with which a worker reports EXIF tags.
#include "_MyClasses/Class/ExifTag/TagMessage.h"

#include <cstdlib>

using namespace kestrine;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::optional<ReadTags> read = readTagsIn({data, size});
    if (!read)
        return 0;
    const Bytes bytes = bytesOf(*read);
    if (const auto again = readTagsIn(bytes); !again || bytesOf(*again) != bytes)
        std::abort();
    if (read->tags && read->tags->size() > 5)
        std::abort();
    return 0;
}
