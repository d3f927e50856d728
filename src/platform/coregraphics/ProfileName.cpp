#include "platform/coregraphics/ProfileName.h"

#include "platform/coregraphics/ProfileBytes.h"
#include "platform/foundation/text/UTF8.h"

#include <algorithm>
#include <optional>

namespace kestrine {

namespace {

// The layout of ICC profiles: a header, a count of tags, then twelve bytes for each tag.
constexpr std::size_t tagCountOffset = 128, firstTagOffset = 132, tagLength = 12;
constexpr std::uint32_t descriptionTag = 0x64657363; // "desc"
constexpr std::uint32_t textType = 0x64657363, multiLanguageType = 0x6d6c7563;
constexpr std::size_t maxTags = 1000, maxNameLength = 200;

std::optional<std::uint32_t> numberAt(ByteView bytes, std::size_t offset) {
    if (offset > bytes.size() || bytes.size() - offset < 4)
        return std::nullopt;
    return bigEndian32(bytes, offset);
}

ByteView partOf(ByteView bytes, std::size_t offset, std::size_t length) {
    offset = std::min(offset, bytes.size());
    return bytes.subspan(offset, std::min(length, bytes.size() - offset));
}

ByteView descriptionIn(ByteView profile) {
    const std::size_t count = std::min<std::size_t>(numberAt(profile, tagCountOffset).value_or(0), maxTags);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t tag = firstTagOffset + i * tagLength;
        if (numberAt(profile, tag) == descriptionTag)
            return partOf(profile, numberAt(profile, tag + 4).value_or(0),
                          numberAt(profile, tag + 8).value_or(0));
    }
    return {};
}

/// The ASCII string after its length, which counts a zero byte. Other bytes become question marks.
std::string plainText(ByteView tag) {
    constexpr std::size_t lengthOffset = 8, textOffset = 12;
    const ByteView text = partOf(
        tag, textOffset, std::min<std::size_t>(numberAt(tag, lengthOffset).value_or(0), maxNameLength));
    std::string name(text.begin(), std::ranges::find(text, 0));
    std::ranges::replace_if(
        name, [](char c) { return (c & 0x80) != 0; }, '?');
    return name;
}

/// UTF-16 in big-endian order; the first language counts.
std::string firstLanguage(ByteView tag) {
    constexpr std::size_t lengthOffset = 20, positionOffset = 24;
    const ByteView text =
        partOf(tag, numberAt(tag, positionOffset).value_or(0),
               std::min<std::size_t>(numberAt(tag, lengthOffset).value_or(0), maxNameLength));
    std::u16string units;
    for (std::size_t i = 0; i + 1 < text.size() && (text[i] != 0 || text[i + 1] != 0); i += 2)
        units += static_cast<char16_t>(text[i] << 8 | text[i + 1]);
    return utf8FromUTF16(units);
}

} // namespace

std::string profileName(ByteView profile) {
    const ByteView tag = descriptionIn(profile);
    const auto type = numberAt(tag, 0);
    return type == textType ? plainText(tag) : type == multiLanguageType ? firstLanguage(tag) : "";
}

} // namespace kestrine
