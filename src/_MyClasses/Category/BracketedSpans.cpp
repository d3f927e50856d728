// The string is split into links; each link but the last ends with a closing bracket. Links are split into
// stretches; each stretch but the first begins with an opening bracket. A span always consists of the last
// stretches of a link. Removing a span removes these stretches and prepends the rest of the link to the next
// one. The next link's own stretches do not change.
#include "_MyClasses/Category/BracketedSpans.h"

#include "_MyClasses/Category/TextStretch.h"

#include <algorithm>
#include <unordered_map>
#include <vector>

namespace kestrine::StringUtility {

namespace {

constexpr std::size_t none = static_cast<std::size_t>(-1);

/// A link that receives more stretches than this at once is crowded: its ends are not indexed, and the link
/// is compared with every span.
constexpr std::size_t maxNewEnds = 32;

struct Link {
    TextStretch start; ///< up to the first opening bracket
    std::list<TextStretch> ends;
    TextHash hash;          ///< of all `ends`, unless it is crowded
    bool isCrowded = false; ///< not all ends are indexed
    bool isThere = true;
    std::size_t before = none, after = none;
};

/// A span without its closing bracket.
struct Span {
    std::u16string text;
    std::size_t brackets; ///< number of opening brackets
    std::uint64_t key;
};

/// The index key of a link's end: its hash and its number of opening brackets.
std::uint64_t keyOf(const TextHash& hash, std::size_t brackets) {
    return std::uint64_t{brackets} << 32 | hash.value();
}

class Chain {
public:
    Chain(std::u16string_view text, char16_t opening, char16_t closing) : closing_(closing) {
        for (std::size_t start = 0; start <= text.size();) {
            const std::size_t end = std::min(text.find(closing, start), text.size());
            addLink(text.substr(start, end - start), opening);
            start = end + 1;
        }
        for (std::size_t i = 0; i + 1 < links_.size(); ++i) {
            links_[i].after = i + 1;
            links_[i + 1].before = i;
            indexEnds(i, links_[i].ends.size(), links_[i].ends.size());
        }
    }

    std::u16string take(EmptySpan emptySpan) {
        for (std::size_t first = 0; links_[first].after != none;) {
            const Link& link = links_[first];
            const bool isEmpty = link.ends.size() == 1 && link.ends.front().length() == 1;
            if (isEmpty && emptySpan == EmptySpan::stops)
                break;
            if (!link.ends.empty())
                remove(spanOf(link));
            first = links_[first].after;
        }
        return text();
    }

private:
    void addLink(std::u16string_view text, char16_t opening) {
        std::size_t start = std::min(text.find(opening), text.size());
        Link& link = links_.emplace_back();
        link.start = TextStretch(text.substr(0, start));
        while (start < text.size()) {
            const std::size_t end = std::min(text.find(opening, start + 1), text.size());
            link.ends.emplace_back(text.substr(start, end - start));
            start = end;
        }
    }

    /// Indexes the ends of a link that begin with its first `count` brackets; more than `maximum` make it
    /// crowded.
    void indexEnds(std::size_t i, std::size_t count, std::size_t maximum) {
        Link& link = links_[i];
        link.isCrowded |= count > maximum;
        if (link.isCrowded) {
            crowded_.push_back(i);
            return;
        }
        std::size_t brackets = link.ends.size() - count;
        for (auto end = std::next(link.ends.begin(), static_cast<std::ptrdiff_t>(count));
             end != link.ends.begin();) {
            link.hash = (--end)->hash().followedBy(link.hash);
            byKey_[keyOf(link.hash, ++brackets)].push_back(i);
        }
    }

    /// The link from its first opening bracket on.
    static Span spanOf(const Link& link) {
        Span span{{}, link.ends.size(), 0};
        TextHash hash;
        for (const TextStretch& end : link.ends) {
            end.appendTo(span.text);
            hash = hash.followedBy(end.hash());
        }
        span.key = keyOf(hash, span.brackets);
        return span;
    }

    bool endsWith(const Link& link, const Span& span) const {
        if (link.after == none || link.ends.size() < span.brackets)
            return false;
        std::u16string_view text = span.text;
        return std::all_of(std::prev(link.ends.end(), static_cast<std::ptrdiff_t>(span.brackets)),
                           link.ends.end(), [&](const TextStretch& end) { return end.isTakenFrom(text); })
               && text.empty();
    }

    /// The links that end with the span, in the order of the text.
    std::vector<std::size_t> placesOf(const Span& span) {
        std::vector<std::size_t> places;
        for (std::vector<std::size_t>* indexed : {&byKey_[span.key], &crowded_}) {
            std::erase_if(*indexed, [&](std::size_t i) { return !links_[i].isThere; });
            std::ranges::copy_if(*indexed, std::back_inserter(places),
                                 [&](std::size_t i) { return endsWith(links_[i], span); });
        }
        std::ranges::sort(places);
        places.erase(std::unique(places.begin(), places.end()), places.end());
        return places;
    }

    /// Removes the span at all places, from the last to the first, because the rest of a removed link becomes
    /// a part of the next one.
    void remove(const Span& span) {
        const std::vector<std::size_t> places = placesOf(span);
        for (auto place = places.rbegin(); place != places.rend(); ++place)
            joinWithNext(*place, span.brackets);
    }

    void joinWithNext(std::size_t i, std::size_t droppedBrackets) {
        Link& link = links_[i];
        Link& next = links_[link.after];
        for (; droppedBrackets > 0; --droppedBrackets)
            link.ends.pop_back();
        TextStretch& last = link.ends.empty() ? link.start : link.ends.back();
        last.append(std::move(next.start));
        next.start = std::move(link.start);
        const std::size_t newEnds = link.ends.size();
        next.ends.splice(next.ends.begin(), link.ends);
        next.before = link.before;
        if (link.before != none)
            links_[link.before].after = link.after;
        link.isThere = false;
        if (next.after != none)
            indexEnds(link.after, newEnds, maxNewEnds);
    }

    std::u16string text() const {
        std::u16string result;
        for (const Link& link : links_) {
            if (!link.isThere)
                continue;
            link.start.appendTo(result);
            for (const TextStretch& end : link.ends)
                end.appendTo(result);
            result.append(link.after == none ? 0 : 1, closing_);
        }
        return result;
    }

    const char16_t closing_;
    std::vector<Link> links_;                                           ///< in the order of the string
    std::unordered_map<std::uint64_t, std::vector<std::size_t>> byKey_; ///< links, some already removed
    std::vector<std::size_t> crowded_;                                  ///< links, some already removed
};

} // namespace

std::u16string withoutBracketedSpans(std::u16string_view text, char16_t opening, char16_t closing,
                                     EmptySpan emptySpan) {
    return Chain(text, opening, closing).take(emptySpan);
}

} // namespace kestrine::StringUtility
