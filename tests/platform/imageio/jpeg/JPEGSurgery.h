// JPEGSurgery: changes the bytes of JPEG files, for files that no library writes.
#pragma once

#include "platform/host/Bytes.h"

#include <algorithm>
#include <initializer_list>

namespace kestrine::testing {

/// Offset of the first marker FF `code` at or after `from`; the size of the file if there is none.
inline std::size_t markerPosition(const Bytes& file, std::uint8_t code, std::size_t from = 0) {
    const std::uint8_t wanted[] = {0xFF, code};
    return static_cast<std::size_t>(
        std::search(file.begin() + static_cast<std::ptrdiff_t>(from), file.end(), wanted, wanted + 2)
        - file.begin());
}

inline Bytes withInserted(Bytes file, std::size_t position, const Bytes& inserted) {
    file.insert(file.begin() + static_cast<std::ptrdiff_t>(position), inserted.begin(), inserted.end());
    return file;
}

inline Bytes withByte(Bytes file, std::size_t position, int value) {
    file[position] = static_cast<std::uint8_t>(value);
    return file;
}

inline Bytes cutAt(const Bytes& file, std::size_t length) {
    return {file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length)};
}

/// A marker segment with `content`.
inline Bytes segmentOf(std::uint8_t code, const Bytes& content) {
    const std::size_t length = content.size() + 2;
    const Bytes head = {0xFF, code, static_cast<std::uint8_t>(length >> 8),
                        static_cast<std::uint8_t>(length)};
    return withInserted(content, 0, head);
}

/// Offset of the entropy-coded bytes.
inline std::size_t scanPosition(const Bytes& file) {
    const std::size_t scan = markerPosition(file, 0xDA);
    return scan + 2 + static_cast<std::size_t>(file[scan + 2] << 8 | file[scan + 3]);
}

} // namespace kestrine::testing
