#include "kestrinectl/OpenedInput.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/text/ShownNumbers.h"
#include "kestrinectl/text/ShownPath.h"

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

/// The length is checked while reading, since that of a pipe is not known before.
std::string readUpToLimit(std::istream& input, const std::string& name, std::uint64_t limit) {
    std::string content;
    char part[1 << 16];
    while (input.read(part, sizeof part) || input.gcount() > 0) {
        content.append(part, static_cast<std::size_t>(input.gcount()));
        if (content.size() > limit)
            throwTooLong(name, limit);
    }
    return content;
}

[[noreturn]] void throwUnreadable(const std::string& name) {
    throw CommandError(name + " cannot be read: " + std::strerror(errno));
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

std::string contentOfInput(const std::string& kind, const std::string& path, std::uint64_t limit) {
    if (path == "-") {
        const std::string name = "standard input";
        std::string content = readUpToLimit(std::cin, name, limit);
        if (std::ferror(stdin) != 0)
            throwUnreadable(name);
        return content;
    }
    const std::string name = "the " + kind + " " + shownPath(path);
    std::ifstream file = openedInput(kind, path);
    std::error_code noFile;
    if (const std::uint64_t size = std::filesystem::file_size(path, noFile); !noFile && size > limit)
        throwTooLong(name, limit);
    std::string content = readUpToLimit(file, name, limit);
    if (file.bad())
        throwUnreadable(name);
    return content;
}

} // namespace kestrine
