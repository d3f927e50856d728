// Scans the tags of an XML property list, as coarsely as libplist does, and refuses whatever the two might
// see differently. It checks no more of the grammar than the bounds need.
#include "platform/foundation/propertylist/PropertyListBounds.h"

#include <algorithm>
#include <string_view>

namespace kestrine {

namespace {

/// libplist compares a new key with all others of its dictionary, in the worst case. So many comparisons
/// are one dictionary of 8192 keys.
constexpr std::uint64_t mostKeyComparisons = 1u << 25;

/// For each character reference in a text libplist moves the rest of that text: bytes moved in all.
constexpr std::uint64_t mostMovedBytes = std::uint64_t{1} << 34;

Failure ambiguous() { return {Reason::malformed, "the property list has a tag that is no proper XML"}; }

bool hasOpenQuote(std::string_view text) { return std::count(text.begin(), text.end(), '"') % 2 != 0; }

/// A dictionary or array whose end is still to come.
struct OpenContainer {
    std::string_view name;
    std::uint64_t keys = 0;
};

class XMLScan {
public:
    explicit XMLScan(std::string_view text) : rest_(text) {}

    Result<void> run() {
        while (!rest_.empty()) {
            const std::string_view text = rest_.substr(0, rest_.find('<'));
            movedBytes_ +=
                static_cast<std::uint64_t>(std::count(text.begin(), text.end(), '&')) * text.size();
            if (movedBytes_ > mostMovedBytes)
                return Failure{Reason::tooLarge, "the property list has too many character references"};
            rest_.remove_prefix(text.size());
            if (!rest_.empty())
                TRY(passMarkup());
        }
        return {};
    }

private:
    Result<void> passMarkup() {
        if (rest_.starts_with("<!--"))
            return passUnread(4, "-->");
        if (rest_.starts_with("<![CDATA["))
            return passUnread(9, "]]>");
        if (rest_.starts_with("<?"))
            return passInstruction();
        if (rest_.starts_with("<!DOCTYPE"))
            return passDocumentType();
        return passTag();
    }

    /// Takes what stands between the first `skip` characters and `closing`, and moves behind that.
    Result<std::string_view> take(std::size_t skip, std::string_view closing) {
        const std::size_t end = rest_.find(closing, skip);
        if (end == std::string_view::npos)
            return Failure{Reason::truncated, "the property list ends inside of a tag"};
        const std::string_view inside = rest_.substr(skip, end - skip);
        rest_.remove_prefix(end + closing.size());
        return inside;
    }

    Result<void> passUnread(std::size_t skip, std::string_view closing) {
        TRY(take(skip, closing));
        return {};
    }

    /// "<?>" is complete to libplist, so one character is skipped.
    Result<void> passInstruction() {
        const std::string_view inside = TRY(take(1, "?>"));
        return hasOpenQuote(inside) ? ambiguous() : Result<void>();
    }

    Result<void> passDocumentType() {
        const std::string_view inside = TRY(take(1, ">"));
        if (inside.find('[') != std::string_view::npos)
            return Failure{Reason::refused, "the property list declares a document type of its own"};
        return hasOpenQuote(inside) ? ambiguous() : Result<void>();
    }

    Result<void> passTag() {
        const std::string_view inside = TRY(take(1, ">"));
        const bool isEmpty = inside.ends_with('/');
        const std::string_view content = inside.substr(0, inside.size() - isEmpty);
        if (content.find('<') != std::string_view::npos || hasOpenQuote(content) || content.starts_with('!'))
            return ambiguous();
        const std::string_view name = content.substr(0, content.find_first_of(" \t\r\n"));
        if (name.starts_with('/'))
            return isEmpty ? ambiguous() : close(name.substr(1));
        return open(name, isEmpty);
    }

    static bool isContainer(std::string_view name) { return name == "dict" || name == "array"; }

    Result<void> open(std::string_view name, bool isEmpty) {
        if (++elements_ > mostPropertyListObjects)
            return Failure{Reason::tooLarge, "the property list has too many objects"};
        if (name == "key" && !open_.empty())
            keyComparisons_ += open_.back().keys++;
        if (keyComparisons_ > mostKeyComparisons)
            return Failure{Reason::tooLarge, "the property list has a dictionary of too many keys"};
        if (isEmpty || !isContainer(name))
            return {};
        if (open_.size() == deepestPropertyList)
            return Failure{Reason::tooLarge, "the property list is nested too deeply"};
        open_.push_back({name});
        return {};
    }

    Result<void> close(std::string_view name) {
        if (!isContainer(name))
            return {};
        if (open_.empty() || open_.back().name != name)
            return Failure{Reason::malformed, "the property list closes what it did not open"};
        open_.pop_back();
        return {};
    }

    std::string_view rest_;
    std::vector<OpenContainer> open_;
    std::uint64_t elements_ = 0;
    std::uint64_t keyComparisons_ = 0;
    std::uint64_t movedBytes_ = 0;
};

} // namespace

Result<void> checkXMLPropertyListBounds(ByteView content) {
    return XMLScan({reinterpret_cast<const char*>(content.data()), content.size()}).run();
}

} // namespace kestrine
