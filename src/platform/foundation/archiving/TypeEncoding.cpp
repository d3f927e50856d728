#include "platform/foundation/archiving/TypeEncoding.h"

#include "platform/foundation/archiving/TypedStreamFormat.h"

#include <charconv>

namespace kestrine {
namespace {

constexpr std::string_view plainCodes = "cCBsSiIlLqQfd@#*:%+!";

class TypeParser {
public:
    explicit TypeParser(std::string_view text) : text_(text) {}

    Result<TypeEncoding> parse() {
        if (!parseItems() || position_ != text_.size() || items_.empty()) {
            return Failure{Reason::malformed, "a type string is malformed"};
        }
        return std::move(items_);
    }

private:
    bool atEndOfItems() const {
        return position_ == text_.size() || text_[position_] == ']' || text_[position_] == '}';
    }

    bool parseItems() {
        while (!atEndOfItems()) {
            if (!parseItem()) {
                return false;
            }
        }
        return true;
    }

    bool parseItem() {
        const char code = text_[position_++];
        const std::size_t index = items_.size();
        items_.push_back({code, 1, index + 1});
        if (code == '[') {
            return parseCount(items_[index].count) && parseInside(index, ']') && items_.size() > index + 1;
        }
        if (code == '{') {
            skipName();
            return parseInside(index, '}');
        }
        return plainCodes.find(code) != std::string_view::npos;
    }

    bool parseCount(std::uint64_t& count) {
        const char* begin = text_.data() + position_;
        const auto [end, error] = std::from_chars(begin, text_.data() + text_.size(), count);
        position_ += static_cast<std::size_t>(end - begin);
        return error == std::errc();
    }

    void skipName() {
        const std::size_t stop = text_.find_first_of("=[]{}", position_);
        if (stop != std::string_view::npos && text_[stop] == '=') {
            position_ = stop + 1;
        }
    }

    bool parseInside(std::size_t index, char closing) {
        if (++depth_ > typedstream::depthLimit || !parseItems()) {
            return false;
        }
        --depth_;
        items_[index].end = items_.size();
        return position_ < text_.size() && text_[position_++] == closing;
    }

    std::string_view text_;
    std::size_t position_ = 0;
    std::size_t depth_ = 0;
    TypeEncoding items_;
};

} // namespace

Result<TypeEncoding> parseTypeEncoding(std::string_view text) { return TypeParser(text).parse(); }

} // namespace kestrine
