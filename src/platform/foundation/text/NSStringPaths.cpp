// The path operations of NSString. All except expandingTildeInPath() normalise the path first: repeated
// separators become one, and a separator at the end is removed, except in "/".
#include "platform/foundation/text/NSString.h"
#include "platform/host/process/Environment.h"
#include "platform/host/process/UserDatabase.h"

#include <algorithm>

namespace kestrine {

namespace {

constexpr char16_t separator = u'/';
constexpr auto npos = std::u16string::npos;

std::u16string normalised(const std::u16string& path) {
    std::u16string result;
    result.reserve(path.size());
    for (const char16_t unit : path)
        if (unit != separator || !result.ends_with(separator))
            result += unit;
    if (result.size() > 1 && result.ends_with(separator))
        result.pop_back();
    return result;
}

/// The start of the last component of a normalised path.
std::size_t startOfLastComponent(const std::u16string& path) {
    const std::size_t slash = path.rfind(separator);
    return slash == npos || path.size() == 1 ? 0 : slash + 1;
}

/// The index of the dot before the extension of a normalised path; npos if there is no extension. A dot at
/// the start of the last component does not count, and neither do the dots of "..".
std::size_t extensionDot(const std::u16string& path) {
    const std::size_t start = startOfLastComponent(path);
    const std::size_t dot = path.rfind(u'.');
    const std::size_t firstOther = path.find_first_not_of(u'.', start);
    return dot == npos || dot <= start || firstOther == npos ? npos : dot;
}

/// The home folder of a user, without a separator at its end; "" if unknown. An empty name means the current
/// user.
std::u16string homeFolderNamed(const NSString& name) {
    std::string home =
        name.isEmpty() ? Environment::ofProcess().homeFolder() : homeFolderOfUser(name.utf8()).value_or("");
    while (home.size() > 1 && home.ends_with('/'))
        home.pop_back();
    return NSString::fromUTF8(home).utf16();
}

} // namespace

NSString NSString::lastPathComponent() const {
    const std::u16string path = normalised(utf16());
    return path.substr(startOfLastComponent(path));
}

NSString NSString::deletingLastPathComponent() const {
    const std::u16string path = normalised(utf16());
    const std::size_t slash = path.rfind(separator);
    if (slash == npos)
        return {};
    return path.substr(0, slash == 0 ? 1 : slash);
}

NSString NSString::appendingPathComponent(const NSString& component) const {
    return normalised(isEmpty() ? component.utf16() : utf16() + separator + component.utf16());
}

NSString NSString::pathExtension() const {
    const std::u16string path = normalised(utf16());
    const std::size_t dot = extensionDot(path);
    return dot == npos ? std::u16string() : path.substr(dot + 1);
}

NSString NSString::deletingPathExtension() const {
    std::u16string path = normalised(utf16());
    const std::size_t dot = extensionDot(path);
    return dot == npos ? path : path.substr(0, dot);
}

NSString NSString::appendingPathExtension(const NSString& extension) const {
    std::u16string path = normalised(utf16());
    if (path.empty() || path == u"/")
        return path;
    return path + u'.' + extension.utf16();
}

NSString NSString::expandingTildeInPath() const {
    if (!utf16().starts_with(u'~'))
        return *this;
    const std::size_t slash = std::min(utf16().find(separator), length());
    const std::u16string home = homeFolderNamed(substring({1, slash - 1}));
    const std::u16string rest = utf16().substr(slash);
    if (home.empty())
        return *this;
    return home == u"/" && !rest.empty() ? rest : home + rest;
}

std::vector<NSString> NSString::pathComponents() const {
    const std::u16string path = normalised(utf16());
    std::vector<NSString> components;
    if (path.starts_with(separator))
        components.emplace_back(u"/");
    std::size_t start = path.find_first_not_of(separator);
    while (start < path.size()) {
        const std::size_t end = std::min(path.find(separator, start), path.size());
        components.emplace_back(path.substr(start, end - start));
        start = end + 1;
    }
    if (utf16().ends_with(separator) && path.size() > 1)
        components.emplace_back(u"/");
    return components;
}

} // namespace kestrine
