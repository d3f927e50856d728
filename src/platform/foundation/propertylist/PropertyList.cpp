#include "platform/foundation/propertylist/PropertyList.h"

#include "platform/foundation/propertylist/PropertyListBounds.h"
#include "platform/host/FreeDeleter.h"

#include <algorithm>
#include <array>
#include <new>
#include <plist/plist.h>

namespace kestrine {

namespace {

/// The XML parser does not support a byte-order mark.
ByteView withoutByteOrderMark(ByteView content) {
    constexpr std::array<std::uint8_t, 3> mark{0xef, 0xbb, 0xbf};
    const bool hasMark =
        content.size() >= mark.size() && std::equal(mark.begin(), mark.end(), content.begin());
    return hasMark ? content.subspan(mark.size()) : content;
}

/// libplist does not check its own allocations. So a lack of memory is noticed before it reads anything.
void checkMemoryFor(ByteView content) {
    constexpr std::size_t bytesPerByte = 16, leastBytes = 256 * 1024;
    ::operator delete(::operator new(content.size() * bytesPerByte + leastBytes));
}

using Writer = decltype(plist_to_bin);

Bytes written(plist_t root, Writer* write) {
    char* text = nullptr;
    std::uint32_t length = 0;
    write(root, &text, &length);
    const std::unique_ptr<char, FreeDeleter> owner(text);
    if (!text)
        throw std::bad_alloc();
    return Bytes(text, text + length);
}

} // namespace

void PropertyList::Release::operator()(void* node) const { plist_free(node); }

PropertyList PropertyList::empty() { return PropertyList(Node(plist_new_dict()), Form::binary); }

Result<PropertyList> PropertyList::fromBytes(ByteView content) {
    TRY(checkPropertyListBounds(content));
    const Form form = isBinaryPropertyList(content) ? Form::binary : Form::xml;
    const ByteView parsed = withoutByteOrderMark(content);
    checkMemoryFor(parsed);
    const auto* text = reinterpret_cast<const char*>(parsed.data());
    const auto length = static_cast<std::uint32_t>(parsed.size());
    plist_t root = nullptr;
    if (form == Form::binary)
        plist_from_bin(text, length, &root);
    else
        plist_from_xml(text, length, &root);
    Node owner(root);
    if (plist_get_node_type(root) != PLIST_DICT)
        return Failure{Reason::malformed, "the property list is not a dictionary"};
    return PropertyList(std::move(owner), form);
}

std::shared_ptr<const NSData> PropertyList::dataForKey(const NSString& key) const {
    const plist_t node = plist_dict_get_item(root_.get(), key.utf8().c_str());
    if (plist_get_node_type(node) != PLIST_DATA)
        return nullptr;
    std::uint64_t length = 0;
    const char* bytes = plist_get_data_ptr(node, &length);
    return std::make_shared<NSData>(Bytes(bytes, bytes + length));
}

void PropertyList::setData(const NSString& key, ByteView data) {
    const plist_t node = plist_new_data(reinterpret_cast<const char*>(data.data()), data.size());
    plist_dict_set_item(root_.get(), key.utf8().c_str(), node);
}

Bytes PropertyList::toBinary() const { return written(root_.get(), plist_to_bin); }

Bytes PropertyList::toXML() const { return written(root_.get(), plist_to_xml); }

} // namespace kestrine
