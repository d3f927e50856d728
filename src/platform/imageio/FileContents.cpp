#include "platform/imageio/FileContents.h"

#include "platform/host/BigEndian.h"

namespace kestrine {

Bytes bytesOf(const FileContents& contents) {
    Bytes bytes{static_cast<std::uint8_t>(contents.kind)};
    appendBigEndian(bytes, contents.count, 4);
    return bytes;
}

std::optional<FileContents> contentsIn(ByteView bytes) {
    if (bytes.size() != 5 || bytes[0] > static_cast<std::uint8_t>(FileContents::Kind::drawing))
        return std::nullopt;
    return FileContents{static_cast<FileContents::Kind>(bytes[0]),
                        static_cast<std::uint32_t>(bigEndian(bytes.subspan(1)))};
}

} // namespace kestrine
