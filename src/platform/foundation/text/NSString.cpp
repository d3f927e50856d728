#include "platform/foundation/text/NSString.h"

#include "platform/foundation/text/TextSearch.h"
#include "platform/foundation/text/UTF8.h"
#include "platform/foundation/text/UnicodeCase.h"

namespace kestrine {

namespace {

/// All default-constructed strings share this object, so they need no allocation.
template <class Storage>
const std::shared_ptr<const Storage>& sharedEmptyStorage() {
    static const auto empty = std::make_shared<const Storage>(std::u16string());
    return empty;
}

} // namespace

NSString::NSString() : storage_(sharedEmptyStorage<Storage>()) {}

NSString::NSString(std::u16string text) : storage_(std::make_shared<const Storage>(std::move(text))) {}

NSString NSString::fromUTF8(std::string_view bytes) { return utf16FromUTF8(bytes); }

std::optional<NSString> NSString::fromObject(const Object& object) {
    auto storage = std::dynamic_pointer_cast<const Storage>(object);
    if (!storage)
        return std::nullopt;
    return NSString(std::move(storage));
}

std::string NSString::utf8() const { return utf8FromUTF16(utf16()); }

NSString NSString::uppercased() const { return upperCased(utf16()); }

NSString NSString::lowercased() const { return lowerCased(utf16()); }

bool NSString::contains(const NSString& part) const {
    return findText<char16_t>(utf16(), part.utf16()) != std::u16string::npos;
}

std::vector<NSString> NSString::componentsSeparatedBy(const NSString& separator) const {
    const std::u16string_view text = utf16();
    std::vector<NSString> pieces;
    std::size_t start = 0;
    while (!separator.isEmpty()) {
        const std::size_t hit = findText<char16_t>(text, separator.utf16(), start);
        if (hit == std::u16string::npos)
            break;
        pieces.emplace_back(std::u16string(text.substr(start, hit - start)));
        start = hit + separator.length();
    }
    if (pieces.empty())
        return {*this};
    pieces.emplace_back(std::u16string(text.substr(start)));
    return pieces;
}

} // namespace kestrine
