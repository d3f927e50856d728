#include "kestrinectl/convert/FileLists.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/text/ShownPath.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

namespace kestrine {

namespace {

std::string contentOf(std::istream& list) { return {std::istreambuf_iterator<char>(list), {}}; }

/// The list may be a pipe, such as one that the shell makes.
std::string contentOfList(const std::string& path) {
    if (path == "-")
        return contentOf(std::cin);
    if (std::filesystem::is_directory(path))
        throw CommandError("the list " + shownPath(path) + " is a folder");
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw CommandError("the list " + shownPath(path) + " cannot be opened: " + std::strerror(errno));
    return contentOf(file);
}

} // namespace

std::vector<std::string> namesInList(const std::string& path, bool withZeroBytes) {
    std::istringstream content(contentOfList(path));
    if (!withZeroBytes && content.view().find('\0') != std::string_view::npos)
        throw CommandError("the list contains zero bytes; --null reads such lists", 2);
    std::vector<std::string> names;
    for (std::string name; std::getline(content, name, withZeroBytes ? '\0' : '\n');)
        if (!name.empty())
            names.push_back(name);
    const auto endsWithReturn = [](const std::string& name) { return name.ends_with('\r'); };
    if (!withZeroBytes && std::ranges::all_of(names, endsWithReturn)) // written on another system
        for (std::string& name : names)
            name.pop_back();
    std::erase(names, "");
    return names;
}

} // namespace kestrine
