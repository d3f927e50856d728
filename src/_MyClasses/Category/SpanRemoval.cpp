// The sweep takes the spans from left to right as they lie in the text. That is the same as the steps when
//   - an opening delimiter inside of a span begins nothing that is the text of some span: only then could
//     a step remove a part of another span;
//   - no opening delimiter reaches over the end of a span;
//   - no removal brings two ends together that make a new delimiter: what stands before a removed span,
//     or may stand there at some step, never ends like the beginning of a delimiter.
#include "_MyClasses/Category/SpanRemoval.h"

#include <algorithm>
#include <unordered_set>
#include <vector>

namespace kestrine::StringUtility {

namespace {

constexpr auto npos = std::u16string_view::npos;

/// Of longer delimiters there are few in any text, and each of their beginnings would have to be compared.
constexpr std::size_t longestDelimiter = 256;

/// How much text may be compared for openings inside of spans, for each code unit of the text.
constexpr std::size_t mostInnerUnits = 16;

/// Calls `test` for each proper beginning of `delimiter` and tells whether it is true for any.
template <class Test>
bool anyBeginning(std::u16string_view delimiter, Test test) {
    for (std::size_t length = 1; length < delimiter.size(); length++)
        if (test(delimiter.substr(0, length)))
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
    /// Whether `before` ends like the beginning of a delimiter, or a beginning ends like it.
    bool mayBeginDelimiter(std::u16string_view before) const {
        const auto meets = [before](std::u16string_view beginning) {
            return before.ends_with(beginning) || (!before.empty() && beginning.ends_with(before));
        };
        return anyBeginning(opening_, meets) || anyBeginning(closing_, meets);
    }

    /// Notes a span and what begins inside of it; false when an opening reaches over its end or there is
    /// too much to compare.
    bool takeSpan(std::size_t start, std::size_t closing) {
        const std::size_t end = closing + closing_.size();
        spans_.insert(text_.substr(start, end - start));
        for (std::size_t inner = text_.find(opening_, start + 1); inner < end;
             inner = text_.find(opening_, inner + 1)) {
            innerUnits_ += end - inner;
            if (inner + opening_.size() > closing || innerUnits_ / mostInnerUnits > text_.size())
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
    if (std::max(opening.size(), closing.size()) > longestDelimiter)
        return std::nullopt;
    return Sweep(text, opening, closing).run();
}

} // namespace kestrine::StringUtility
