#include "kestrinectl/FileLists.h"

#include "kestrinectl/CommandError.h"
#include "platform/host/files/FileContent.h"

#include <iostream>
#include <iterator>
#include <sstream>

namespace kestrine {

namespace {

constexpr std::uint64_t maxListBytes = std::uint64_t{1} << 30;

std::string contentOfList(const std::string& path) {
    if (path == "-")
        return {std::istreambuf_iterator<char>(std::cin), {}};
    const Result<Bytes> bytes = readSmallFile(path, maxListBytes);
    if (!bytes)
        throw CommandError(bytes.failure().text);
    return {bytes->begin(), bytes->end()};
}

} // namespace

std::vector<std::string> namesInList(const std::string& path, bool withZeroBytes) {
    std::istringstream content(contentOfList(path));
    std::vector<std::string> names;
    for (std::string name; std::getline(content, name, withZeroBytes ? '\0' : '\n');)
        if (!name.empty())
            names.push_back(name);
    return names;
}

} // namespace kestrine
