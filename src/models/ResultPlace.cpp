#include "models/ResultPlace.h"

#include "_MyClasses/Category/StringUtility.h"

namespace kestrine {

namespace {

/// The path of `folder` relative to `root`, or `folder` if it is not below `root`. Presets alone have always
/// removed every occurrence of the root.
NSString placeBelow(const NSString& root, const NSString& folder, bool isOfPresetAlone) {
    const NSString beginning = root + u"/";
    if (isOfPresetAlone || !folder.utf16().starts_with(beginning.utf16()))
        return StringUtility::removeString(folder, beginning).value_or(u"");
    return folder.utf16().substr(beginning.length());
}

} // namespace

OptionalString folderFor(const ResultPlace& place, const OptionalString& folder,
                         const OptionalString& rootPath) {
    if (!folder)
        return std::nullopt;
    const NSString& given = rootPath ? *rootPath : *folder;
    NSString result = place.base.value_or(given);
    if (place.subfolder)
        result = result.appendingPathComponent(
            place.base ? NSString::fromUTF8(pathInside(place.subfolder->utf8())) : *place.subfolder);
    if (!place.keepsTree || *folder == given)
        return result;
    const NSString relative = placeBelow(given, *folder, place.subfolder && !place.base);
    return relative.isEmpty() ? result : result.appendingPathComponent(relative);
}

} // namespace kestrine
