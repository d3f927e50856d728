#include "platform/imageio/webp/Container.h"

#include "platform/host/LittleEndian.h"

#include <string_view>

namespace kestrine::webp {

namespace {

constexpr std::size_t fileHeaderBytes = 12, chunkHeaderBytes = 8;
constexpr std::uint8_t hasProfile = 0x20, hasAlpha = 0x10, hasExif = 0x08;

void appendChunk(Bytes& file, std::string_view name, ByteView content) {
    file.insert(file.end(), name.begin(), name.end());
    appendLittleEndian(file, content.size(), 4);
    file.insert(file.end(), content.begin(), content.end());
    file.resize(file.size() + content.size() % 2);
}

/// What kinds of chunks there are, and the size of the picture.
Bytes features(const RowFormat& format, ByteView profile, ByteView exif) {
    Bytes content{static_cast<std::uint8_t>((profile.empty() ? 0 : hasProfile)
                                            | (format.hasAlpha ? hasAlpha : 0)
                                            | (exif.empty() ? 0 : hasExif)),
                  0, 0, 0};
    appendLittleEndian(content, format.width - 1, 3);
    appendLittleEndian(content, format.height - 1, 3);
    return content;
}

/// The chunks with pixels.
ByteView pictureChunks(ByteView file) {
    ByteView chunks = file.subspan(fileHeaderBytes);
    const std::string_view first(reinterpret_cast<const char*>(chunks.data()), 4);
    constexpr std::size_t featureBytes = 10;
    return first == "VP8X" ? chunks.subspan(chunkHeaderBytes + featureBytes) : chunks;
}

} // namespace

Bytes withMetadata(ByteView file, const RowFormat& format, ByteView profile, ByteView exif) {
    if (profile.empty() && exif.empty())
        return copied(file);
    Bytes chunks;
    appendChunk(chunks, "VP8X", features(format, profile, exif));
    if (!profile.empty())
        appendChunk(chunks, "ICCP", profile);
    const ByteView picture = pictureChunks(file);
    chunks.insert(chunks.end(), picture.begin(), picture.end());
    if (!exif.empty())
        appendChunk(chunks, "EXIF", exif);
    Bytes result{'R', 'I', 'F', 'F'};
    const Bytes webp{'W', 'E', 'B', 'P'};
    appendLittleEndian(result, webp.size() + chunks.size(), 4);
    result.insert(result.end(), webp.begin(), webp.end());
    result.insert(result.end(), chunks.begin(), chunks.end());
    return result;
}

} // namespace kestrine::webp
