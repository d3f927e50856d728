#include "_MyClasses/Category/FinderScripts.h"

namespace kestrine {

namespace {

// Each "%@" is replaced by an argument, in order.
constexpr const char16_t* deleting = u"tell application \"Finder\"\n delete {%@}\n end tell";
constexpr const char16_t* fileDeleting = u"tell application \"Finder\"\n delete file \"%@\"\n end tell";
constexpr const char16_t* duplicating =
    u"tell application \"Finder\"\n duplicate {%@} to \"%@\" %@ replacing\n end tell";
constexpr const char16_t* moving =
    u"tell application \"Finder\"\n move {%@} to \"%@\" %@ replacing\n end tell";
constexpr const char16_t* fileMoving =
    u"tell application \"Finder\"\n move file \"%@\" to \"%@\" %@ replacing\n end tell";

/// A "%@" within an argument is not replaced.
NSString filled(std::u16string_view form, std::initializer_list<NSString> texts) {
    std::u16string result;
    for (const NSString& text : texts) {
        const std::size_t place = form.find(u"%@");
        result += form.substr(0, place);
        result += text.utf16();
        form.remove_prefix(place + 2);
    }
    result += form;
    return result;
}

NSString replacingWord(bool replaces) { return replaces ? u"with" : u"without"; }

std::vector<NSString> withFolder(std::vector<NSString> items, const NSString& folder) {
    items.push_back(folder);
    return items;
}

} // namespace

NSString quotedList(const std::vector<NSString>& finderPaths) {
    std::u16string list;
    for (const NSString& path : finderPaths)
        list += u"\"" + path.utf16() + u"\",";
    if (!list.empty())
        list.pop_back();
    return list;
}

FinderScript deletingScript(const std::vector<NSString>& items) {
    return {filled(deleting, {quotedList(items)}), items};
}

FinderScript fileDeletingScript(const NSString& item) { return {filled(fileDeleting, {item}), {item}}; }

FinderScript duplicatingScript(const std::vector<NSString>& items, const NSString& folder, bool replaces) {
    return {filled(duplicating, {quotedList(items), folder, replacingWord(replaces)}),
            withFolder(items, folder)};
}

FinderScript movingScript(const std::vector<NSString>& items, const NSString& folder, bool replaces) {
    return {filled(moving, {quotedList(items), folder, replacingWord(replaces)}), withFolder(items, folder)};
}

FinderScript fileMovingScript(const NSString& item, const NSString& folder, bool replaces) {
    return {filled(fileMoving, {item, folder, replacingWord(replaces)}), {item, folder}};
}

std::optional<NSRange> rangeOfMisleadingPath(const FinderScript& script) {
    for (const NSString& path : script.finderPaths)
        if (path.utf16().find_first_of(u"\"\\") != std::u16string::npos)
            return NSRange{script.source.utf16().find(path.utf16()), path.length()};
    return std::nullopt;
}

} // namespace kestrine
