// Box: the unit of which HEIF, AVIF and JPEG 2000 files consist (ISO base media file format), and numbers
// inside it.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/host/FourCC.h"
#include "platform/host/Result.h"
#include "platform/host/files/ByteReader.h"

#include <optional>
#include <string>
#include <vector>

namespace kestrine {

/// The four characters, each unprintable one as '?'.
std::string nameOf(FourCC code);

struct Box {
    FourCC type = 0;
    ByteView content; ///< without the header
};

/// Takes the first box from `bytes`; nullopt if they do not begin with a complete one.
std::optional<Box> takeBox(ByteView& bytes);

/// The boxes that lie one after another in `content`. Fails if one is longer than the rest, or if there are
/// more than 65536.
Result<std::vector<Box>> boxesIn(ByteView content);

/// The content of the first box of that type; nullopt if there is none.
std::optional<ByteView> contentOf(const std::vector<Box>& boxes, FourCC type);

/// A part of a file.
struct FileRange {
    std::uint64_t offset = 0;
    std::uint64_t length = 0;

    bool operator==(const FileRange&) const = default;
};

struct BoxPlace {
    FourCC type = 0;
    FileRange content;
};

/// The box at `offset`, whose content may reach beyond the end of the file; nullopt if there is none.
std::optional<BoxPlace> boxAt(const ByteReader& reader, std::uint64_t offset);

/// Reads big-endian numbers one after another. Whatever lies after the end reads as zero; then isSound() is
/// false.
class Cursor {
public:
    explicit Cursor(ByteView bytes) : rest_(bytes) {}

    /// The next `size` bytes, at most 8, as a number.
    std::uint64_t number(std::size_t size);
    std::uint8_t u8() { return static_cast<std::uint8_t>(number(1)); }
    std::uint16_t u16() { return static_cast<std::uint16_t>(number(2)); }
    std::uint32_t u32() { return static_cast<std::uint32_t>(number(4)); }
    std::int32_t s32() { return static_cast<std::int32_t>(u32()); }

    /// The next `size` bytes; empty if there are fewer.
    ByteView take(std::size_t size);
    void skip(std::size_t size) { (void)take(size); }
    /// Everything after what was read.
    ByteView rest() const { return rest_; }

    bool isSound() const { return isSound_; }

private:
    ByteView rest_;
    bool isSound_ = true;
};

/// The version and flags that begin many boxes.
struct FullBoxHeader {
    std::uint8_t version = 0;
    std::uint32_t flags = 0;
};
FullBoxHeader readFullBoxHeader(Cursor& cursor);

} // namespace kestrine
