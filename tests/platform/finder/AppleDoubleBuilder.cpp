#include "tests/platform/finder/AppleDoubleBuilder.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>

namespace kestrine::testing {

namespace {

void append(Bytes& bytes, std::uint64_t number, int size) {
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8)
        bytes.push_back(static_cast<std::uint8_t>(number >> shift));
}

Bytes copyOf(ByteView bytes) { return {bytes.begin(), bytes.end()}; }

} // namespace

Bytes appleDouble(const std::vector<BuiltEntry>& entries) {
    Bytes bytes;
    append(bytes, 0x00051607, 4);
    append(bytes, 0x00020000, 4);
    bytes.resize(24);
    append(bytes, entries.size(), 2);
    std::size_t offset = 26 + 12 * entries.size();
    for (const BuiltEntry& entry : entries) {
        append(bytes, entry.id, 4);
        append(bytes, offset, 4);
        append(bytes, entry.content.size(), 4);
        offset += std::max(entry.room, entry.content.size());
    }
    for (const BuiltEntry& entry : entries) {
        const std::size_t end = bytes.size() + std::max(entry.room, entry.content.size());
        bytes.insert(bytes.end(), entry.content.begin(), entry.content.end());
        bytes.resize(end);
    }
    return bytes;
}

Bytes serverBlob(std::string_view comment, ByteView finderInfo) {
    return appleDouble({{9, copyOf(finderInfo)},
                        {4, bytesOf(comment), 200},
                        {8, Bytes(16, 0xDA)},
                        {14, Bytes(4, 0x14)},
                        {0x80444556, Bytes(8, 0xDE)},
                        {0x80494E4F, Bytes(8, 0x1E)},
                        {0x8053594E, Bytes(8, 0x5E)},
                        {0x8053567E, Bytes(4, 0x7E)}});
}

Bytes macSidecar(ByteView finderInfo, std::string_view resourceFork) {
    return appleDouble({{9, copyOf(finderInfo)}, {2, bytesOf(resourceFork)}});
}

Bytes sidecarWithComment(std::string_view comment, ByteView finderInfo) {
    return appleDouble({{4, bytesOf(comment), 200}, {9, copyOf(finderInfo)}, {2, bytesOf("a fork")}});
}

} // namespace kestrine::testing
