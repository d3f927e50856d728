#include "platform/imageio/svg/Text.h"

#include "platform/imageio/ImageCodec.h"
#include "platform/imageio/svg/Zlib.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>

namespace kestrine::svg {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t maxTextBytes = std::size_t{64} << 20;

std::string_view characters(ByteView bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

bool isCompressed(std::string_view text) { return text.starts_with("\x1f\x8b\x08"sv); }

/// The name that gzip stores after ten bytes, if a flag says so and nothing precedes it.
bool mayBeNamedSVG(std::string_view head) {
    constexpr std::size_t flagsAt = 3, nameAt = 10;
    constexpr int hasName = 8, hasExtra = 4;
    if (head.size() <= nameAt || (head[flagsAt] & hasExtra) != 0)
        return false;
    if ((head[flagsAt] & hasName) == 0)
        return true;
    const std::string_view name = head.substr(nameAt, head.find('\0', nameAt) - nameAt);
    return name.ends_with(".svg") || name.ends_with(".svgz") || name.ends_with(".SVG");
}

std::string_view withoutSpace(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"sv), text.size()));
    return text;
}

/// The text after `end`; empty if it does not occur.
std::string_view after(std::string_view text, std::string_view end) {
    const std::size_t found = text.find(end);
    return found == std::string_view::npos ? std::string_view() : text.substr(found + end.size());
}

/// The text after a document type, whose declarations may be in brackets. Empty if it does not end.
std::string_view afterDocumentType(std::string_view text) {
    const bool hasDeclarations = text.substr(0, text.find('>')).find('[') != std::string_view::npos;
    if (!hasDeclarations)
        return after(text, ">");
    do
        text = withoutSpace(after(text, "]"));
    while (!text.empty() && text.front() != '>');
    return after(text, ">");
}

/// Skips comments, declarations and processing instructions. Empty if one of them does not end.
std::string_view fromFirstElement(std::string_view text) {
    for (;;) {
        text = withoutSpace(text);
        if (text.starts_with("<!--"))
            text = after(text, "-->");
        else if (text.starts_with("<?"))
            text = after(text, "?>");
        else if (text.starts_with("<!DOCTYPE"))
            text = afterDocumentType(text);
        else
            return text;
    }
}

std::string_view withoutByteOrderMark(std::string_view text) {
    return text.substr(text.starts_with("\xef\xbb\xbf"sv) ? 3 : 0);
}

/// Whether it is certainly not HTML, which may also start with a comment.
bool isXML(std::string_view text) {
    return text.starts_with("<?xml"sv) || text.starts_with("<!DOCTYPE svg"sv);
}

/// The name of an element, perhaps with a prefix.
bool isNamedSVG(std::string_view element) {
    if (!element.starts_with('<'))
        return false;
    std::string_view name = element.substr(1, element.find_first_of(" \t\r\n/>"sv) - 1);
    if (const std::size_t colon = name.find(':'); colon != std::string_view::npos)
        name.remove_prefix(colon + 1);
    return name == "svg";
}

Result<Bytes> decompressed(const Bytes& file) {
    constexpr int withHeaderOfGzip = 15 + 16;
    Bytes piece(1 << 16);
    if (!installedZlib())
        return installedZlib().failure();
    InflateStream stream(withHeaderOfGzip);
    if (!stream.isReady())
        return Failure{Reason::outOfMemory, "not enough memory"};
    stream->next_in = const_cast<Bytef*>(file.data()); // is not written
    stream->avail_in = static_cast<uInt>(file.size());
    Bytes text;
    for (int status = Z_OK; status != Z_STREAM_END;) {
        if (text.size() >= maxTextBytes)
            return Failure{Reason::tooLarge, "the SVG drawing has more than 64 MiB of text"};
        stream->next_out = piece.data();
        stream->avail_out = static_cast<uInt>(piece.size());
        status = stream.inflate(Z_NO_FLUSH);
        text.insert(text.end(), piece.data(), stream->next_out);
        if (status == Z_BUF_ERROR || (status == Z_OK && stream->avail_in == 0 && stream->avail_out > 0))
            return Failure{Reason::truncated, "the compressed SVG drawing ends too early"};
        if (status != Z_OK && status != Z_STREAM_END)
            return Failure{Reason::malformed, "the compressed SVG drawing is damaged"};
    }
    return text;
}

} // namespace

bool isDrawing(ByteView head) {
    std::string_view text = characters(head);
    if (isCompressed(text))
        return mayBeNamedSVG(text);
    text = withoutByteOrderMark(text);
    const std::string_view element = fromFirstElement(text);
    const bool isCut = head.size() == maxHeadBytes;
    return isNamedSVG(element) || (isCut && element.empty() && isXML(text));
}

Result<Bytes> readText(const ByteReader& reader) {
    constexpr std::size_t maxPrologue = 65536;
    Bytes text = TRY(reader.readAll(maxTextBytes));
    if (isCompressed(characters(text)))
        text = TRY(decompressed(text));
    if (!isNamedSVG(fromFirstElement(withoutByteOrderMark(characters(text).substr(0, maxPrologue)))))
        return Failure{Reason::unsupported, "the file holds no SVG drawing"};
    return text;
}

bool mayOpenFiles(ByteView text) {
    constexpr std::array names = {"<text"sv,    ":text"sv,    "<image"sv,  ":image"sv,
                                  "<feImage"sv, ":feImage"sv, "<!ENTITY"sv};
    return std::ranges::any_of(names, [all = characters(text)](std::string_view name) {
        return all.find(name) != std::string_view::npos;
    });
}

} // namespace kestrine::svg
