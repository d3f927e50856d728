#include "platform/appkit/FileURI.h"

#include <array>
#include <charconv>

namespace kestrine {

namespace {

/// The prefixes that mean this machine.
constexpr std::array<std::string_view, 2> localPrefixes = {"file://", "file://localhost"};

/// The part after the scheme and the machine; empty when it is not a path on this machine.
std::string_view escapedPath(std::string_view uri) {
    for (const std::string_view prefix : localPrefixes)
        if (uri.starts_with(prefix) && uri.substr(prefix.size()).starts_with('/'))
            return uri.substr(prefix.size());
    return {};
}

/// The byte that the two hexadecimal digits at the beginning of `text` mean; 0 when they are not digits.
unsigned char escapedByte(std::string_view text) {
    unsigned char byte = 0;
    const std::string_view digits = text.substr(0, 2);
    const auto parsed = std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
    return digits.size() == 2 && parsed.ptr == digits.data() + 2 ? byte : 0;
}

} // namespace

Result<std::string> pathOfFileURI(std::string_view uri) {
    const std::string_view escaped = escapedPath(uri);
    if (escaped.empty() || escaped.find_first_of(std::string_view("?#\0", 3)) != std::string_view::npos)
        return Failure{Reason::malformed, "not the URI of a file on this machine"};
    std::string path;
    for (std::size_t i = 0; i < escaped.size(); ++i) {
        if (escaped[i] != '%') {
            path += escaped[i];
            continue;
        }
        const unsigned char byte = escapedByte(escaped.substr(i + 1));
        if (byte == 0)
            return Failure{Reason::malformed, "a broken escape in a URI"};
        path += static_cast<char>(byte);
        i += 2;
    }
    return path;
}

} // namespace kestrine
