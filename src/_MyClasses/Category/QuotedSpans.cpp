// The string is split at its quotes into a chain of stretches. Removing a span joins the stretches on both
// sides.
#include "_MyClasses/Category/QuotedSpans.h"

#include "_MyClasses/Category/TextStretch.h"

#include <algorithm>
#include <unordered_map>

namespace kestrine::StringUtility {

namespace {

constexpr std::size_t endOfChain = static_cast<std::size_t>(-1);

struct QuotedLink {
    TextStretch stretch;
    std::size_t before = endOfChain, after = endOfChain;
    bool isThere = true;
};

class QuoteChain {
public:
    QuoteChain(std::u16string_view text, char16_t quote) : quote_(quote) {
        for (std::size_t start = 0; start <= text.size();) {
            const std::size_t end = std::min(text.find(quote, start), text.size());
            links_.push_back({TextStretch(text.substr(start, end - start))});
            start = end + 1;
        }
        for (std::size_t i = 1; i < links_.size(); ++i) {
            links_[i - 1].after = i;
            links_[i].before = i - 1;
            index(i);
        }
    }

    QuotedSpans take(EmptySpan emptySpan) {
        QuotedSpans result;
        for (std::size_t i = links_[0].after; isQuoted(i); i = links_[0].after) {
            if (links_[i].stretch.length() == 0 && emptySpan == EmptySpan::stops)
                break;
            links_[i].stretch.appendTo(result.spans.emplace_back());
            remove(result.spans.back(), links_[i].stretch.hash().value());
        }
        for (std::size_t i = 0; i != endOfChain; i = links_[i].after) {
            result.rest.append(i == 0 ? 0 : 1, quote_);
            links_[i].stretch.appendTo(result.rest);
        }
        return result;
    }

private:
    bool isQuoted(std::size_t i) const { return i != endOfChain && links_[i].after != endOfChain; }
    void index(std::size_t i) { byHash_[links_[i].stretch.hash().value()].push_back(i); }

    bool isQuotedText(std::size_t i, std::u16string_view text) const {
        return links_[i].isThere && isQuoted(i) && links_[i].stretch.length() == text.size()
               && links_[i].stretch.isTakenFrom(text);
    }

    /// If two occurrences share a quote, only the first is removed; the second one's text is joined to the
    /// text before.
    void remove(std::u16string_view span, std::uint64_t hash) {
        const auto indexed = byHash_.extract(hash);
        std::vector<std::size_t> places = indexed.mapped();
        std::ranges::sort(places);
        for (const std::size_t i : places) {
            if (isQuotedText(i, span))
                joinAround(i);
            else if (links_[i].isThere && links_[i].stretch.hash().value() == hash)
                index(i);
        }
    }

    void joinAround(std::size_t i) {
        const std::size_t before = links_[i].before, after = links_[i].after;
        QuotedLink& joined = links_[before];
        joined.stretch.append(std::move(links_[after].stretch));
        joined.after = links_[after].after;
        if (joined.after != endOfChain)
            links_[joined.after].before = before;
        links_[i].isThere = links_[after].isThere = false;
        if (before != 0)
            index(before);
    }

    const char16_t quote_;
    std::vector<QuotedLink> links_; ///< in the order of the string; the first is before all quotes
    /// The positions of all links but the first, by the hash of their stretch. Entries may be outdated: check
    /// them before use.
    std::unordered_map<std::uint64_t, std::vector<std::size_t>> byHash_;
};

} // namespace

QuotedSpans takeQuotedSpans(std::u16string_view text, char16_t quote, EmptySpan emptySpan) {
    return QuoteChain(text, quote).take(emptySpan);
}

} // namespace kestrine::StringUtility
