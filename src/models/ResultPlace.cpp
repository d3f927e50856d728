#include "models/ResultPlace.h"

#include "_MyClasses/Category/StringUtility.h"

namespace kestrine {

OptionalString folderFor(const ResultPlace& place, const OptionalString& folder,
                         const OptionalString& rootPath) {
    if (!folder)
        return std::nullopt;
    const NSString& given = rootPath ? *rootPath : *folder;
    NSString result = place.base.value_or(given);
    if (place.subfolder)
        result = result.appendingPathComponent(*place.subfolder);
    if (!place.keepsTree || *folder == given)
        return result;
    const NSString relative = StringUtility::removeString(*folder, given + u"/").value_or(u"");
    return relative.isEmpty() ? result : result.appendingPathComponent(relative);
}

} // namespace kestrine
