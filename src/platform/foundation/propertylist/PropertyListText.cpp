#include "platform/foundation/propertylist/PropertyListText.h"

#include "platform/foundation/propertylist/PropertyListBounds.h"
#include "platform/foundation/text/UTF8.h"
#include "platform/host/FreeDeleter.h"

#include <memory>
#include <new>
#include <plist/plist.h>
#include <type_traits>

namespace kestrine {

namespace {

struct FreeNode {
    void operator()(plist_t node) const { plist_free(node); }
};
using Node = std::unique_ptr<std::remove_pointer_t<plist_t>, FreeNode>;

std::u16string withoutUnstorable(const std::u16string& text) {
    std::u16string storable = text;
    for (std::size_t i = 0; i < text.size(); i += utf16Length(codePointAt(text, i))) {
        const char32_t point = codePointAt(text, i);
        if (point == 0 || isHighSurrogate(point) || isLowSurrogate(point))
            storable[i] = u'\uFFFD';
    }
    return storable;
}

} // namespace

Result<NSString> textOfPropertyList(ByteView content) {
    if (!isBinaryPropertyList(content))
        return Failure{Reason::unsupported, "the property list is not in the binary form"};
    TRY(checkPropertyListBounds(content));
    plist_t root = nullptr;
    plist_from_bin(reinterpret_cast<const char*>(content.data()), static_cast<std::uint32_t>(content.size()),
                   &root);
    const Node owner(root);
    std::uint64_t length = 0;
    const char* text =
        plist_get_node_type(root) == PLIST_STRING ? plist_get_string_ptr(root, &length) : nullptr;
    if (!text)
        return Failure{Reason::malformed, "the property list is no text"};
    return NSString::fromUTF8({text, length});
}

Bytes propertyListOfText(const NSString& text) {
    const Node node(plist_new_string(NSString(withoutUnstorable(text.utf16())).utf8().c_str()));
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(node.get(), &bytes, &length);
    const std::unique_ptr<char, FreeDeleter> owner(bytes);
    if (!bytes)
        throw std::bad_alloc();
    return Bytes(bytes, bytes + length);
}

} // namespace kestrine
