#include "kestrinectl/convert/FileLists.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/OpenedInput.h"

#include <algorithm>
#include <string_view>

namespace kestrine {

namespace {

constexpr std::uint64_t maxList = 1ULL << 30; // some ten million names

/// The parts that are not empty; each of them ends with `end`, which the last one may lack.
std::vector<std::string> namesBefore(char end, std::string_view list) {
    std::vector<std::string> names;
    for (std::size_t begin = 0; begin < list.size();) {
        const std::size_t length = std::min(list.find(end, begin), list.size()) - begin;
        if (length > 0)
            names.emplace_back(list.substr(begin, length));
        begin += length + 1;
    }
    return names;
}

/// Whether the names end with a carriage return, as in a list that was written on another system. The last
/// one need not if its line has no end.
bool endWithReturns(const std::vector<std::string>& names, bool lastLineHasEnd) {
    const std::size_t count = names.size() - (names.size() > 1 && !lastLineHasEnd ? 1 : 0);
    return std::all_of(names.begin(), names.begin() + static_cast<std::ptrdiff_t>(count),
                       [](const std::string& name) { return name.ends_with('\r'); });
}

/// The names in a list with one per line.
std::vector<std::string> namesInLines(std::string_view list) {
    constexpr std::string_view byteOrderMark = "\xef\xbb\xbf"; // of UTF-8
    if (list.starts_with(byteOrderMark))
        list.remove_prefix(byteOrderMark.size());
    std::vector<std::string> names = namesBefore('\n', list);
    if (endWithReturns(names, list.ends_with('\n')))
        for (std::string& name : names)
            if (name.ends_with('\r'))
                name.pop_back();
    std::erase(names, "");
    return names;
}

} // namespace

std::vector<std::string> namesInList(const std::string& path, bool withZeroBytes) {
    const std::string list = contentOfInput("list", path, maxList);
    if (withZeroBytes)
        return namesBefore('\0', list);
    if (list.find('\0') != std::string::npos)
        throw CommandError("the list contains zero bytes; --null reads such lists", 2);
    return namesInLines(list);
}

} // namespace kestrine
