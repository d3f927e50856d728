#include "platform/imageio/png/fast/Chunk.h"

#include "platform/host/BigEndian.h"

#include <libdeflate.h>

namespace kestrine::png {

void appendChunk(std::string_view type, std::initializer_list<ByteView> content, Bytes& file) {
    std::size_t length = 0;
    for (const ByteView part : content)
        length += part.size();
    appendBigEndian(file, length, 4);
    const std::size_t checked = file.size();
    file.insert(file.end(), type.begin(), type.end());
    for (const ByteView part : content)
        file.insert(file.end(), part.begin(), part.end());
    appendBigEndian(file, libdeflate_crc32(0, file.data() + checked, file.size() - checked), 4);
}

} // namespace kestrine::png
