#include "kestrinectl/OpenedInput.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/text/ShownNumbers.h"
#include "kestrinectl/text/ShownPath.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iostream>

namespace kestrine {

namespace {

[[noreturn]] void throwTooLong(const std::string& name, std::uint64_t limit) {
    throw CommandError(name + " is too large: it may have at most " + shownBytes(limit));
}

[[noreturn]] void throwUnreadable(const std::string& name) {
    throw CommandError(name + " cannot be read: " + std::strerror(errno));
}

void readParts(std::istream& input, const PartReceiver& take) {
    std::array<char, 1 << 16> part;
    while (input.read(part.data(), part.size()) || input.gcount() > 0)
        take({part.data(), static_cast<std::size_t>(input.gcount())});
}

/// Appends parts. The length is checked while reading, since that of a pipe is not known before.
PartReceiver appenderTo(std::string& content, const std::string& name, std::uint64_t limit) {
    return [&content, name, limit](std::string_view part) {
        content.append(part);
        if (content.size() > limit)
            throwTooLong(name, limit);
    };
}

} // namespace

std::ifstream openedInput(const std::string& kind, const std::string& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored))
        throw CommandError("the " + kind + " " + shownPath(path) + " is a folder");
    std::ifstream stream(path, std::ios::binary);
    if (!stream)
        throw CommandError("the " + kind + " " + shownPath(path)
                           + " cannot be opened: " + std::strerror(errno));
    return stream;
}

void readStandardInput(const PartReceiver& take) {
    readParts(std::cin, take);
    if (std::ferror(stdin) != 0)
        throwUnreadable(nameOfStandardInput);
}

std::string contentOfInput(const std::string& kind, const std::string& path, std::uint64_t limit) {
    std::string content;
    if (path == "-") {
        readStandardInput(appenderTo(content, nameOfStandardInput, limit));
        return content;
    }
    const std::string name = "the " + kind + " " + shownPath(path);
    std::ifstream file = openedInput(kind, path);
    std::error_code noFile;
    if (const std::uint64_t size = std::filesystem::file_size(path, noFile); !noFile && size > limit)
        throwTooLong(name, limit);
    readParts(file, appenderTo(content, name, limit));
    if (file.bad())
        throwUnreadable(name);
    return content;
}

} // namespace kestrine
