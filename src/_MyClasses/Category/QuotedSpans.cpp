// The text is a chain of stretches with a quote between any two. Taking a span out joins the stretches on its
// sides.
#include "_MyClasses/Category/QuotedSpans.h"

#include "_MyClasses/Category/TextStretch.h"

#include <algorithm>
#include <unordered_map>

namespace kestrine::StringUtility {

namespace {

constexpr std::size_t none = static_cast<std::size_t>(-1);

struct Link {
    TextStretch stretch;
    std::size_t before = none, after = none;
    bool isThere = true;
};

class Chain {
public:
    Chain(std::u16string_view text, char16_t quote) : quote_(quote) {
        for (std::size_t start = 0; start <= text.size();) {
            const std::size_t end = std::min(text.find(quote, start), text.size());
            links_.push_back({TextStretch(text.substr(start, end - start))});
            start = end + 1;
        }
        for (std::size_t i = 1; i < links_.size(); ++i) {
            links_[i - 1].after = i;
            links_[i].before = i - 1;
            note(i);
        }
    }

    QuotedSpans take(EmptySpan emptySpan) {
        QuotedSpans result;
        for (std::size_t i = links_[0].after; isQuoted(i); i = links_[0].after) {
            if (links_[i].stretch.length() == 0 && emptySpan == EmptySpan::endsTaking)
                break;
            links_[i].stretch.appendTo(result.spans.emplace_back());
            remove(result.spans.back(), links_[i].stretch.hash().value());
        }
        for (std::size_t i = 0; i != none; i = links_[i].after) {
            result.rest.append(i == 0 ? 0 : 1, quote_);
            links_[i].stretch.appendTo(result.rest);
        }
        return result;
    }

private:
    bool isQuoted(std::size_t i) const { return i != none && links_[i].after != none; }
    void note(std::size_t i) { byHash_[links_[i].stretch.hash().value()].push_back(i); }

    bool isQuotedText(std::size_t i, std::u16string_view text) const {
        return links_[i].isThere && isQuoted(i) && links_[i].stretch.length() == text.size()
               && links_[i].stretch.isTakenFrom(text);
    }

    /// Of two occurrences that share a quote the first goes and takes the second's stretch along.
    void remove(std::u16string_view span, std::uint64_t hash) {
        const auto noted = byHash_.extract(hash);
        std::vector<std::size_t> places = noted.mapped();
        std::ranges::sort(places);
        for (const std::size_t i : places) {
            if (isQuotedText(i, span))
                joinAround(i);
            else if (links_[i].isThere && links_[i].stretch.hash().value() == hash)
                note(i);
        }
    }

    void joinAround(std::size_t i) {
        const std::size_t before = links_[i].before, after = links_[i].after;
        Link& joined = links_[before];
        joined.stretch.append(std::move(links_[after].stretch));
        joined.after = links_[after].after;
        if (joined.after != none)
            links_[joined.after].before = before;
        links_[i].isThere = links_[after].isThere = false;
        if (before != 0)
            note(before);
    }

    const char16_t quote_;
    std::vector<Link> links_; ///< in the order of the text; the first stands before all quotes
    /// Where stretches of that hash are, the first left out; some have changed since.
    std::unordered_map<std::uint64_t, std::vector<std::size_t>> byHash_;
};

} // namespace

QuotedSpans takeQuotedSpans(std::u16string_view text, char16_t quote, EmptySpan emptySpan) {
    return Chain(text, quote).take(emptySpan);
}

} // namespace kestrine::StringUtility
