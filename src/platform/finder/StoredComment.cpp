#include "platform/finder/AppleDouble.h"
#include "platform/finder/StoredForms.h"
#include "platform/foundation/propertylist/PropertyListText.h"
#include "platform/foundation/text/NSStringEncoding.h"
#include "platform/host/StringBytes.h"

#include <algorithm>
#include <string_view>

namespace kestrine {

namespace {

std::string_view textOf(ByteView bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

OptionalString readText(ByteView stored) { return NSString::fromUTF8(textOf(stored)); }

std::optional<Bytes> changedText(ByteView, const NSString& comment) {
    return copied(bytesOf(comment.utf8()));
}

OptionalString readPropertyList(ByteView stored) {
    const Result<NSString> text = textOfPropertyList(stored);
    return text ? OptionalString(*text) : std::nullopt;
}

std::optional<Bytes> changedPropertyList(ByteView stored, const NSString& comment) {
    if (!textOfPropertyList(stored))
        return std::nullopt;
    return comment.isEmpty() ? Bytes() : propertyListOfText(comment);
}

/// The first `room` bytes of `text` at most, cut after a whole character.
std::string_view cutToRoom(std::string_view text, std::size_t room) {
    if (text.size() <= room)
        return text;
    const auto continuesCharacter = [text](std::size_t i) { return (text[i] & 0xC0) == 0x80; };
    constexpr std::size_t maxContinuationBytes = 3; // of a UTF-8 character
    std::size_t end = room;
    while (end > 0 && room - end < maxContinuationBytes && continuesCharacter(end))
        --end;
    return text.substr(0, end);
}

OptionalString readCommentInAppleDouble(ByteView stored) {
    const Result<AppleDouble> container = AppleDouble::parse(stored);
    const auto content = container ? container->content(AppleDoubleEntry::comment) : std::nullopt;
    if (!content || content->empty())
        return std::nullopt;
    for (const NSStringEncoding encoding : {NSUTF8StringEncoding, NSMacOSRomanStringEncoding})
        if (const OptionalString text = decodedText(*content, encoding))
            return text;
    return readText(*content);
}

std::optional<Bytes> appleDoubleWithComment(ByteView stored, const NSString& comment) {
    constexpr std::size_t maxCommentSize = 200; // bytes; the limit of the format and of its readers
    const Result<AppleDouble> container = AppleDouble::parse(stored);
    if (!container || !container->content(AppleDoubleEntry::comment))
        return std::nullopt;
    const std::string text = comment.utf8();
    const std::size_t room = std::min(container->room(AppleDoubleEntry::comment), maxCommentSize);
    return container->withContent(AppleDoubleEntry::comment, bytesOf(cutToRoom(text, room)));
}

} // namespace

const StoredForm<NSString> commentAsText{readText, changedText};
const StoredForm<NSString> commentInPropertyList{readPropertyList, changedPropertyList};
const StoredForm<NSString> commentInAppleDouble{readCommentInAppleDouble, appleDoubleWithComment};

} // namespace kestrine
