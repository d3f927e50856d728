#include "kestrinectl/desktop/FileURI.h"

#include <charconv>

namespace kestrine {

std::optional<std::string> pathOfFileURI(const std::string& uri) {
    std::string encoded;
    for (const std::string begin : {"file:///", "file://localhost/"})
        if (uri.starts_with(begin))
            encoded = uri.substr(begin.size() - 1);
    std::string path;
    for (std::size_t i = 0; i < encoded.size(); ++i) {
        if (encoded[i] != '%') {
            path += encoded[i];
            continue;
        }
        unsigned char byte = 0;
        const char* digits = encoded.data() + i + 1;
        const bool hasBoth = i + 2 < encoded.size();
        if (!hasBoth || std::from_chars(digits, digits + 2, byte, 16).ptr != digits + 2 || byte == 0)
            return std::nullopt;
        path += static_cast<char>(byte);
        i += 2;
    }
    return path.empty() ? std::nullopt : std::optional(path);
}

} // namespace kestrine
