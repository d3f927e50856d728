#include "platform/foundation/text/UTF8.h"

#include <array>

namespace kestrine {

namespace {

/// The forms of multi-byte sequences. Code points below `smallest` would be overlong.
struct SequenceForm {
    unsigned char leadMask;
    unsigned char lead;
    std::size_t length;
    char32_t smallest;
};
constexpr std::array<SequenceForm, 3> sequenceForms{{
    {0xe0, 0xc0, 2, 0x80},
    {0xf0, 0xe0, 3, 0x800},
    {0xf8, 0xf0, 4, 0x10000},
}};

constexpr char16_t byteEscape = 0xdc00; // plus the byte, which is 0x80 or more

struct Decoded {
    char32_t codePoint = 0;
    std::size_t length = 0; // 0 if no valid sequence starts here
};

Decoded decodeForm(std::string_view bytes, const SequenceForm& form) {
    if (bytes.size() < form.length)
        return {};
    char32_t codePoint = static_cast<unsigned char>(bytes[0]) & static_cast<unsigned char>(~form.leadMask);
    for (std::size_t i = 1; i < form.length; i++) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if ((byte & 0xc0) != 0x80)
            return {};
        codePoint = (codePoint << 6) | (byte & 0x3f);
    }
    const bool isSurrogate = codePoint >= 0xd800 && codePoint <= 0xdfff;
    if (codePoint < form.smallest || codePoint > 0x10ffff || isSurrogate)
        return {};
    return {codePoint, form.length};
}

Decoded decodeFirst(std::string_view bytes) {
    const auto lead = static_cast<unsigned char>(bytes[0]);
    if (lead < 0x80)
        return {lead, 1};
    for (const SequenceForm& form : sequenceForms)
        if ((lead & form.leadMask) == form.lead)
            return decodeForm(bytes, form);
    return {};
}

void appendUTF16(std::u16string& text, char32_t codePoint) {
    if (codePoint <= 0xffff) {
        text += static_cast<char16_t>(codePoint);
        return;
    }
    text += static_cast<char16_t>(0xd800 + ((codePoint - 0x10000) >> 10));
    text += static_cast<char16_t>(0xdc00 + (codePoint & 0x3ff));
}

void appendContinuation(std::string& bytes, char32_t codePoint, int shift) {
    bytes += static_cast<char>(0x80 | ((codePoint >> shift) & 0x3f));
}

void appendUTF8(std::string& bytes, char32_t codePoint) {
    if (codePoint < 0x80) {
        bytes += static_cast<char>(codePoint);
    } else if (codePoint < 0x800) {
        bytes += static_cast<char>(0xc0 | (codePoint >> 6));
        appendContinuation(bytes, codePoint, 0);
    } else if (codePoint < 0x10000) {
        bytes += static_cast<char>(0xe0 | (codePoint >> 12));
        appendContinuation(bytes, codePoint, 6);
        appendContinuation(bytes, codePoint, 0);
    } else {
        bytes += static_cast<char>(0xf0 | (codePoint >> 18));
        appendContinuation(bytes, codePoint, 12);
        appendContinuation(bytes, codePoint, 6);
        appendContinuation(bytes, codePoint, 0);
    }
}

} // namespace

char32_t codePointAt(std::u16string_view text, std::size_t index) {
    const char32_t first = text[index];
    if (!isHighSurrogate(first) || index + 1 == text.size() || !isLowSurrogate(text[index + 1]))
        return first;
    return 0x10000 + ((first & 0x3ff) << 10) + (text[index + 1] & 0x3ff);
}

std::u16string utf16FromUTF8(std::string_view bytes) {
    std::u16string text;
    text.reserve(bytes.size());
    while (!bytes.empty()) {
        const Decoded decoded = decodeFirst(bytes);
        if (decoded.length == 0)
            text += static_cast<char16_t>(byteEscape + static_cast<unsigned char>(bytes[0]));
        else
            appendUTF16(text, decoded.codePoint);
        bytes.remove_prefix(decoded.length == 0 ? 1 : decoded.length);
    }
    return text;
}

std::string utf8FromUTF16(std::u16string_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const char32_t codePoint = codePointAt(text, i);
        i += utf16Length(codePoint);
        if (codePoint >= byteEscape + 0x80 && codePoint <= byteEscape + 0xff)
            bytes += static_cast<char>(codePoint - byteEscape);
        else
            appendUTF8(bytes,
                       isHighSurrogate(codePoint) || isLowSurrogate(codePoint) ? U'\ufffd' : codePoint);
    }
    return bytes;
}

} // namespace kestrine
