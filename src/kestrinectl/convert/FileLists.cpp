#include "kestrinectl/convert/FileLists.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/OpenedInput.h"

#include <algorithm>
#include <sstream>

namespace kestrine {

namespace {

constexpr std::uint64_t maxList = 1ULL << 30; // some ten million names

} // namespace

std::vector<std::string> namesInList(const std::string& path, bool withZeroBytes) {
    std::istringstream content(contentOfInput("list", path, maxList));
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
