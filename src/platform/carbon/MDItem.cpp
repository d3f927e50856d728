#include "platform/carbon/MDItem.h"

#include "platform/carbon/PathBytes.h"
#include "platform/finder/FinderMetadata.h"
#include "platform/host/files/FileStatus.h"

namespace kestrine {

MDItemRef MDItemCreate(const OptionalString& path) {
    std::optional<std::string> bytes = pathBytesOf(path);
    if (!bytes || !itemExists(*bytes))
        return nullptr;
    return std::make_shared<const MDItem>(*std::move(bytes));
}

Object MDItemCopyAttribute(const MDItemRef& item, const NSString& name) {
    if (item == nullptr || name != kMDItemFinderComment)
        return nullptr;
    const Result<OptionalString> comment = finderComment(item->path());
    return comment && *comment ? (*comment)->object() : nullptr;
}

} // namespace kestrine
