#include "kestrinectl/text/JSONText.h"

#include "platform/host/StringBytes.h"

namespace kestrine {

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

constexpr std::string_view hexDigits = "0123456789abcdef";

std::optional<std::string> bytesOfHex(const std::string& hex) {
    std::string bytes;
    for (std::size_t i = 0; i < hex.size(); i += 2) {
        const auto high = hexDigits.find(hex[i]);
        const auto low = i + 1 < hex.size() ? hexDigits.find(hex[i + 1]) : std::string_view::npos;
        if (high == std::string_view::npos || low == std::string_view::npos)
            return std::nullopt;
        bytes += static_cast<char>(high * 16 + low);
    }
    return bytes;
}

} // namespace

ordered_json textToJSON(const std::string& bytes) {
    try {
        (void)ordered_json(bytes).dump(); // throws when it is not valid UTF-8
        return bytes;
    } catch (const ordered_json::type_error&) {
        return bytesToJSON(bytesOf(bytes));
    }
}

ordered_json bytesToJSON(ByteView bytes) {
    std::string hex;
    for (const std::uint8_t byte : bytes)
        hex += {hexDigits[byte >> 4], hexDigits[byte & 15]};
    return {{"bytes", hex}};
}

std::optional<std::string> textFromJSON(const json& value) {
    if (value.is_string())
        return value.get<std::string>();
    if (!value.is_object() || value.size() != 1 || !value.contains("bytes") || !value["bytes"].is_string())
        return std::nullopt;
    return bytesOfHex(value["bytes"].get<std::string>());
}

std::string textIn(const json& value) {
    std::optional<std::string> text = textFromJSON(value);
    if (!text)
        throw json::type_error::create(302, "a string is missing", &value);
    return *std::move(text);
}

} // namespace kestrine
