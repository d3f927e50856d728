// Boxes: builds boxes of HEIF files by hand.
#pragma once

#include "platform/host/BigEndian.h"
#include "platform/imageio/heif/ItemTable.h"

#include <initializer_list>

namespace kestrine::testing {

inline Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

/// A big-endian number of `size` bytes.
inline Bytes number(std::uint64_t value, int size) {
    Bytes bytes;
    appendBigEndian(bytes, value, size);
    return bytes;
}
inline Bytes u8(std::uint64_t value) { return number(value, 1); }
inline Bytes u16(std::uint64_t value) { return number(value, 2); }
inline Bytes u32(std::uint64_t value) { return number(value, 4); }

inline Bytes box(const char (&type)[5], std::initializer_list<Bytes> content) {
    const Bytes all = joined(content);
    return joined({u32(8 + all.size()), u32(fourCC(type)), all});
}
inline Bytes fullBox(const char (&type)[5], unsigned version, unsigned flags,
                     std::initializer_list<Bytes> content) {
    return box(type, {u32(version << 24 | flags), joined(content)});
}

inline Bytes entry(unsigned id, const char (&type)[5], unsigned flags = 0) {
    return fullBox("infe", 2, flags, {u16(id), u16(0), u32(fourCC(type)), u8(0)});
}
inline Bytes entries(std::initializer_list<Bytes> all) {
    return fullBox("iinf", 0, 0, {u16(all.size()), joined(all)});
}
inline Bytes reference(const char (&type)[5], unsigned from, std::initializer_list<Bytes> to) {
    return box(type, {u16(from), u16(to.size()), joined(to)});
}
/// One item with one extent, by construction method.
inline Bytes place(unsigned id, unsigned method, unsigned offset, unsigned length) {
    return joined({u16(id), u16(method), u16(0), u16(1), u32(1), u32(offset), u32(length)});
}
/// iloc, version 1, with 4-byte offsets, lengths and indexes.
inline Bytes places(std::initializer_list<Bytes> all) {
    return fullBox("iloc", 1, 0, {u16(0x4404), u16(all.size()), joined(all)});
}

/// The content of a box meta that lies at `offset` of its file.
inline heif::LoadedBox meta(std::initializer_list<Bytes> boxes, std::uint64_t offset = 0) {
    return {joined({u32(0), joined(boxes)}), offset};
}

} // namespace kestrine::testing
