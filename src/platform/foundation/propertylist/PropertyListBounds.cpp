#include "platform/foundation/propertylist/PropertyListBounds.h"

#include <algorithm>
#include <string_view>

namespace kestrine {

bool isBinaryPropertyList(ByteView content) {
    constexpr std::string_view magic = "bplist";
    return content.size() >= magic.size() && std::equal(magic.begin(), magic.end(), content.begin());
}

Result<void> checkPropertyListBounds(ByteView content) {
    if (content.size() > maxPropertyListSize)
        return Failure{Reason::tooLarge, "the property list is longer than 16 MiB"};
    return isBinaryPropertyList(content) ? checkBinaryPropertyListBounds(content)
                                         : checkXMLPropertyListBounds(content);
}

} // namespace kestrine
