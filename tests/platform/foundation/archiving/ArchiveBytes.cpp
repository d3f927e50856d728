#include "tests/platform/foundation/archiving/ArchiveBytes.h"

namespace kestrine::testing {

Bytes fromHex(std::string_view hex) {
    std::string digits(hex);
    std::erase(digits, ' ');
    Bytes bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

std::string toHex(ByteView bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string hex;
    for (const std::uint8_t byte : bytes) {
        hex += {digits[byte >> 4], digits[byte & 15]};
    }
    return hex;
}

std::string hexOf(std::string_view text) {
    return toHex({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

Bytes archiveOf(std::string_view root) {
    return fromHex(std::string(littleHeader) + newType("@") + std::string(root));
}

Bytes archiveOfValues(std::string_view groups, std::string_view header) {
    return fromHex(std::string(header) + newType("@") + "84" + newClass("A") + "85" + std::string(groups)
                   + "86");
}

std::string newClass(std::string_view name, std::string_view version) {
    return "84" + newType(name) + std::string(version);
}

std::string newRootClass() { return newClass("NSObject") + "85"; }

std::string newType(std::string_view type) {
    const std::uint8_t length[] = {0x81, static_cast<std::uint8_t>(type.size()),
                                   static_cast<std::uint8_t>(type.size() >> 8)};
    return "84" + toHex(type.size() < 128 ? ByteView(length).subspan(1, 1) : ByteView(length)) + hexOf(type);
}

} // namespace kestrine::testing
