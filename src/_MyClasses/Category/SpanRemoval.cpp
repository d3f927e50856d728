// The pass removes the spans from left to right. The result equals removing them one by one if
//   1. no text from an inner opening delimiter to the end of a span equals another span (else removing that
//      span would remove a part of this one);
//   2. no opening delimiter extends over the end of a span;
//   3. no removal creates a new delimiter: the text before a removed span, at any step, never ends with the
//      beginning of a delimiter.
#include "_MyClasses/Category/SpanRemoval.h"

#include <algorithm>
#include <unordered_set>
#include <vector>

namespace kestrine::StringUtility {

namespace {

constexpr auto npos = std::u16string_view::npos;

/// The limit in code units. Every beginning of a delimiter is compared, which takes long for longer
/// delimiters.
constexpr std::size_t maxDelimiterLength = 256;

/// Limits the text that is compared for inner opening delimiters, per code unit of the string.
constexpr std::size_t maxInnerUnits = 16;

/// Whether `predicate` is true for any proper beginning of `delimiter`.
template <class Predicate>
bool anyBeginning(std::u16string_view delimiter, Predicate predicate) {
    for (std::size_t length = 1; length < delimiter.size(); length++)
        if (predicate(delimiter.substr(0, length)))
            return true;
    return false;
}

class Sweep {
public:
    Sweep(std::u16string_view text, std::u16string_view opening, std::u16string_view closing)
        : text_(text), opening_(opening), closing_(closing) {}

    std::optional<std::u16string> run() {
        if (mayBeginDelimiter(closing_))
            return std::nullopt;
        std::size_t position = 0;
        while (true) {
            const std::size_t start = text_.find(opening_, position);
            const std::size_t closing = start == npos ? npos : text_.find(closing_, start + opening_.size());
            if (closing == npos)
                break;
            kept_ += text_.substr(position, start - position);
            if (mayBeginDelimiter(kept_) || !takeSpan(start, closing))
                return std::nullopt;
            position = closing + closing_.size();
        }
        kept_ += text_.substr(position);
        const auto isSpan = [this](std::u16string_view inner) { return spans_.contains(inner); };
        return std::any_of(innerSpans_.begin(), innerSpans_.end(), isSpan) ? std::nullopt
                                                                           : std::optional(kept_);
    }

private:
    /// Whether `before` ends with the beginning of a delimiter, or a beginning ends with `before`.
    bool mayBeginDelimiter(std::u16string_view before) const {
        const auto meets = [before](std::u16string_view beginning) {
            return before.ends_with(beginning) || (!before.empty() && beginning.ends_with(before));
        };
        return anyBeginning(opening_, meets) || anyBeginning(closing_, meets);
    }

    /// Adds a span and its inner opening delimiters. False when an opening delimiter extends over the span's
    /// end, or when there is too much to compare.
    bool takeSpan(std::size_t start, std::size_t closing) {
        const std::size_t end = closing + closing_.size();
        spans_.insert(text_.substr(start, end - start));
        for (std::size_t inner = text_.find(opening_, start + 1); inner < end;
             inner = text_.find(opening_, inner + 1)) {
            innerUnits_ += end - inner;
            if (inner + opening_.size() > closing || innerUnits_ / maxInnerUnits > text_.size())
                return false;
            innerSpans_.push_back(text_.substr(inner, end - inner));
        }
        return true;
    }

    const std::u16string_view text_;
    const std::u16string_view opening_;
    const std::u16string_view closing_;
    std::u16string kept_;
    std::unordered_set<std::u16string_view> spans_;
    std::vector<std::u16string_view> innerSpans_;
    std::size_t innerUnits_ = 0;
};

} // namespace

std::optional<std::u16string> removedInOneSweep(std::u16string_view text, std::u16string_view opening,
                                                std::u16string_view closing) {
    if (std::max(opening.size(), closing.size()) > maxDelimiterLength)
        return std::nullopt;
    return Sweep(text, opening, closing).run();
}

} // namespace kestrine::StringUtility
