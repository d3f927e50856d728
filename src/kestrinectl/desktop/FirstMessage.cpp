#include "kestrinectl/desktop/FirstMessage.h"

#include <algorithm>
#include <string_view>

namespace kestrine {

namespace {

constexpr std::string_view programPrefix = "kestrinectl: ";

} // namespace

std::string FirstMessage::text() const {
    return line_.starts_with(programPrefix) ? line_.substr(programPrefix.size()) : line_;
}

FirstMessage::int_type FirstMessage::overflow(int_type character) {
    if (traits_type::eq_int_type(character, traits_type::eof()))
        return traits_type::not_eof(character);
    const char c = traits_type::to_char_type(character);
    return xsputn(&c, 1) == 1 ? character : traits_type::eof();
}

std::streamsize FirstMessage::xsputn(const char* text, std::streamsize count) {
    const std::string_view added(text, static_cast<std::size_t>(count));
    if (!isComplete_) {
        const std::size_t end = added.find('\n');
        line_ += added.substr(0, end);
        isComplete_ = end != std::string_view::npos;
    }
    return target_->sputn(text, count);
}

} // namespace kestrine
